#include "tools/report/htmlText.h"

namespace vdrdump {

std::string htmlText(std::string_view text) {
    std::string html;
    html.reserve(text.size());
    for (const char each : text) {
        switch (each) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            default:
                html += each;
        }
    }
    return html;
}

}  // namespace vdrdump
