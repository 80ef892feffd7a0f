#include "tools/explain/explanationText.h"

#include <cstdio>

#include "tools/explain/Answer.h"

namespace vdrdump {
namespace {

std::string fullText(const LossLines& loss) {
    std::string text = loss.headline + "\n";
    for (const LossLines::Line& line : loss.lines) {
        char name[64];
        std::snprintf(name, sizeof(name), "  %-14s", line.name.c_str());
        text += name + line.text + "\n";
    }
    return text;
}

}  // namespace

std::string explanationText(const Explanations& explanations, const NodeNames& names) {
    const Answer answer = answerOf(explanations, names);
    std::string text;
    if (!answer.count.empty()) {
        text = answer.count + "\n";
        for (const LossLines& loss : answer.losses) {
            text += "  " + loss.headline + "\n";
        }
        if (answer.more != 0) {
            text += "  " + std::to_string(answer.more) + " more\n";
        }
    }
    for (size_t i = 0; i < answer.inFull(); ++i) {
        text += (text.empty() ? "" : "\n") + fullText(answer.losses[i]);
    }
    // A full list is not the end of it.
    text += answer.losses.size() > answer.inFull() ? "\n" : "";
    for (const std::string& remark : answer.remarks) {
        text += remark + "\n";
    }
    return text;
}

}  // namespace vdrdump
