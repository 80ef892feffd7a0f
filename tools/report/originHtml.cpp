#include "tools/report/originHtml.h"

#include <algorithm>

#include "tools/output/printablePath.h"
#include "tools/output/shellWord.h"
#include "tools/report/htmlText.h"
#include "tools/sink/infoWords.h"

namespace vdrdump {
namespace {

std::string commandText(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + shellWord(word);
    }
    return text;
}

std::string row(const std::string& name, const std::string& html) {
    return "<tr><th scope=\"row\">" + name + "</th><td>" + html + "</td></tr>\n";
}

std::string fileText(const ReadFile& read) {
    return read.file.path + ": " + kindWords(read.file) +
           (read.file.time.empty() ? "" : ", " + read.file.time) + ", " +
           std::to_string(read.records) + (read.records == 1 ? " record" : " records") +
           (read.isDamaged ? ", damaged" : "");
}

// With these one goes on from the page; standard input is gone.
std::string nextCommands(const LossRequest& request, const std::string& names,
                         std::optional<uint32_t> lost) {
    const auto& files = request.files;
    if (!lost || std::find(files.begin(), files.end(), "-") != files.end()) {
        return "";
    }
    const std::string number = std::to_string(*lost);
    std::vector<std::string> trace = {"vdrdump", "export"};
    trace.insert(trace.end(), files.begin(), files.end());
    for (const std::string& word :
         {std::string("--format"), std::string("trace"), std::string("--lost"), number,
          std::string("-o"), "frame" + number + ".json"}) {
        trace.push_back(word);
    }
    if (!names.empty()) {
        trace.insert(trace.end(), {"--names", names});
    }
    return htmlText(commandText({"vdrdump", "show", files.front(), "--around", number + ":3"})) +
           "\n" + htmlText(commandText(trace));
}

}  // namespace

std::string originHtml(const ReportRequest& request, const std::vector<ReadFile>& files,
                       const std::string& drawnBy, std::optional<uint32_t> lost) {
    std::string read;
    for (const ReadFile& file : files) {
        read += (read.empty() ? "" : "<br/>") + htmlText(fileText(file));
    }
    std::string html = "<footer>\n<h2>How this page was made</h2>\n<table>\n";
    html += row("by", htmlText(std::string("vdrdump ") + VDRDUMP_VERSION +
                               (drawnBy.empty() ? "" : ", panels by " + drawnBy)));
    html += row("with", "<code>" + htmlText(commandText(request.command)) + "</code>");
    html += row("of", read);
    if (!request.which.log.empty()) {
        html += row("log", htmlText(printablePath(request.which.log)));
    }
    if (!request.names.empty()) {
        html += row("names", htmlText(printablePath(request.names)));
    }
    if (const std::string next = nextCommands(request.which, request.names, lost); !next.empty()) {
        html += row("to go on", "<pre>" + next + "</pre>");
    }
    return html + "</table>\n</footer>\n";
}

}  // namespace vdrdump
