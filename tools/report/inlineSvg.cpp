#include "tools/report/inlineSvg.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

namespace vdrdump {
namespace {

// What gnuplot draws with. Anything else in its output is none of its own doing.
constexpr std::string_view kElements[] = {
        "svg",  "g",      "path",           "rect",    "line",    "polyline", "polygon",
        "text", "tspan",  "circle",         "ellipse", "defs",    "use",      "title",
        "desc", "filter", "feFlood",        "feBlend", "feImage", "pattern",  "clipPath",
        "mask", "marker", "feComposite",    "feMerge", "stop",    "feOffset", "feMergeNode",
        "a",    "symbol", "linearGradient", "image",
};

// Where names stand in a tag, up to the name itself.
constexpr std::string_view kNameStarts[] = {" id=\"", " id='",  "href=\"#", "href='#",
                                            "url(#",  "url('#", "url(\"#"};

bool isKnown(std::string_view tag) {
    tag.remove_prefix(std::min<size_t>(tag.size(), tag.substr(0, 2) == "</" ? 2 : 1));
    const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/>"));
    return tag.find('<') == std::string_view::npos &&
           std::find(std::begin(kElements), std::end(kElements), name) != std::end(kElements);
}

std::string withPrefix(std::string_view tag, const std::string& prefix) {
    std::string result;
    for (size_t at = 0; at < tag.size();) {
        size_t length = 1;
        bool isName = false;
        for (const std::string_view start : kNameStarts) {
            if (tag.substr(at, start.size()) == start) {
                length = start.size();
                isName = true;
            }
        }
        result.append(tag.substr(at, length)).append(isName ? prefix : "");
        at += length;
    }
    return result;
}

// gnuplot takes "&name;" for a character that was written so, and passes it on. Of those a page
// knows, as a file does, five and the ones that are given by number.
bool isReference(std::string_view text) {
    const size_t end = text.find(';');
    if (end == std::string_view::npos || end > 8) {
        return false;
    }
    const std::string_view name = text.substr(1, end - 1);
    for (const char* known : {"amp", "lt", "gt", "quot", "apos"}) {
        if (name == known) {
            return true;
        }
    }
    return name.size() > 1 && name[0] == '#' &&
           std::all_of(name.begin() + 1, name.end(),
                       [](unsigned char each) { return std::isdigit(each) != 0; });
}

std::string withoutReferences(std::string_view text) {
    std::string result;
    for (size_t at = 0; at < text.size(); ++at) {
        result += text[at];
        result += text[at] == '&' && !isReference(text.substr(at)) ? "amp;" : "";
    }
    return result;
}

// Of an element that says what a file is and in a page would say so of every part of it: where it
// ends. `at` for any other.
size_t passBy(const std::string& svg, size_t at) {
    constexpr std::pair<std::string_view, std::string_view> kPassedBy[] = {
            {"<!--", "-->"}, {"<title>Gnuplot", "</title>"}, {"<desc>", "</desc>"}};
    for (const auto& [open, close] : kPassedBy) {
        if (svg.compare(at, open.size(), open) == 0) {
            const size_t end = svg.find(close, at);
            return end == std::string::npos ? svg.size() : end + close.size();
        }
    }
    return at;
}

}  // namespace

std::string inlineSvg(const std::string& svg, const std::string& prefix) {
    const size_t begin = svg.find("<svg");
    const size_t end = svg.rfind("</svg>");
    if (begin == std::string::npos || end == std::string::npos || end < begin) {
        return "";
    }
    std::string result;
    for (size_t at = begin; at < end;) {
        if (svg[at] != '<') {
            const size_t next = std::min(svg.find('<', at), end);
            result += withoutReferences(std::string_view(svg).substr(at, next - at));
            at = next;
        } else if (const size_t behind = passBy(svg, at); behind != at) {
            at = behind;
        } else {
            const size_t next = svg.find('>', at);
            const std::string_view tag = std::string_view(svg).substr(at, next + 1 - at);
            if (!isKnown(tag)) {
                return "";
            }
            result += withPrefix(tag, prefix);
            at += tag.size();
        }
    }
    return result + "</svg>\n";
}

std::string makerOf(const std::string& svg) {
    constexpr std::string_view kStart = "<desc>Produced by ";
    const size_t at = svg.find(kStart);
    const size_t end = svg.find("</desc>", at);
    if (at == std::string::npos || end == std::string::npos) {
        return "";
    }
    std::string maker = svg.substr(at + kStart.size(), end - at - kStart.size());
    maker.erase(maker.find_last_not_of(" \n") + 1);
    return maker;
}

}  // namespace vdrdump
