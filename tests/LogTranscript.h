#pragma once

#include <cctype>
#include <string>
#include <vector>

#include "platform/host/LogControl.h"

namespace zk::test {

// The captured lines that contain `part`, whole: "I function<LINE>: text" under the recorder's tag,
// with the priority's letter in front. LINE stands wherever the source line was printed.
inline std::vector<std::string> transcript(const std::string& part) {
    std::vector<std::string> lines;
    for (const host::LogLine& logged : host::capturedLog()) {
        std::string text = logged.text;
        if (text.find(part) == std::string::npos) {
            continue;
        }
        const size_t open = text.find('<');
        const size_t close = text.find('>', open);
        const std::string number =
                close == std::string::npos ? "" : text.substr(open + 1, close - open - 1);
        for (size_t at = text.find(number); !number.empty() && at != std::string::npos;
             at = text.find(number, at + 1)) {
            const size_t behind = at + number.size();
            const bool isWhole = behind == text.size() || std::isdigit(text[behind]) == 0;
            if (at > 0 && (text[at - 1] == '<' || text[at - 1] == ':') && isWhole) {
                text.replace(at, number.size(), "LINE");
            }
        }
        const std::string tag = logged.tag == "VDRPERF" ? "" : "(" + logged.tag + ") ";
        lines.push_back(std::string(1, "??VDIWEF"[logged.priority & 7]) + " " + tag + text);
    }
    return lines;
}

}  // namespace zk::test
