#include "tests/vdrdump/Markup.h"

#include <regex>
#include <sstream>

namespace vdrdump::test {
namespace {

size_t countIn(const std::map<std::string, size_t>& counts, const std::string& name) {
    const auto found = counts.find(name);
    return found == counts.end() ? 0 : found->second;
}

}  // namespace

Markup::Markup(const std::string& page) {
    const std::string doctype = "<!DOCTYPE html>\n";
    if (page.compare(0, doctype.size(), doctype) != 0) {
        fail("no document type");
    }
    for (mAt = doctype.size(); mAt < page.size() && mFault.empty();) {
        const bool isTag = page[mAt] == '<';
        const size_t end = isTag ? page.find('>', mAt) : page.find('<', mAt);
        if (isTag && end == std::string::npos) {
            fail("a tag without an end");
            return;
        }
        const size_t next = end == std::string::npos ? page.size() : isTag ? end + 1 : end;
        const std::string part = page.substr(mAt, next - mAt);
        isTag ? readTag(part) : readText(part);
        mAt = next;
    }
    if (mFault.empty() && !mOpen.empty()) {
        fail("no end of " + mOpen.back());
    }
    checkLinks();
}

size_t Markup::ofClass(const std::string& name) const {
    return countIn(mClasses, name);
}

size_t Markup::ofKind(const std::string& name) const {
    return countIn(mKinds, name);
}

void Markup::readTag(const std::string& tag) {
    static const std::regex kTag(R"(<(/?)([A-Za-z][A-Za-z0-9]*)([^<>]*?)(/?)>)");
    std::smatch parts;
    if (!std::regex_match(tag, parts, kTag)) {
        fail("no tag: " + tag.substr(0, 100));
        return;
    }
    const std::string name = parts[2];
    if (parts[1].length() != 0) {
        if (mOpen.empty() || mOpen.back() != name) {
            fail("end of " + name + " within " + (mOpen.empty() ? "nothing" : mOpen.back()));
            return;
        }
        mOpen.pop_back();
        return;
    }
    ++mKinds[name];
    readAttributes(tag, name.size() + 1);
    if (parts[4].length() == 0) {
        mOpen.push_back(name);
    }
}

void Markup::readAttributes(const std::string& tag, size_t at) {
    static const std::regex kAttribute(R"(\s+([A-Za-z][\w:-]*)\s*=\s*("[^"]*"|'[^']*'))");
    std::string rest = tag.substr(at);
    std::smatch parts;
    while (std::regex_search(rest, parts, kAttribute, std::regex_constants::match_continuous)) {
        const std::string name = parts[1];
        const std::string quoted = parts[2];
        const std::string value = quoted.substr(1, quoted.size() - 2);
        if (name == "id" && ++mIds[value] > 1) {
            fail("two parts called " + value);
        }
        if ((name == "href" || name == "xlink:href") && value.substr(0, 1) == "#") {
            mLinks.push_back(value.substr(1));
        } else if (name == "href" || name == "src" || name == "xlink:href") {
            fail("something from elsewhere: " + value);
        }
        if (name.substr(0, 2) == "on") {
            fail("a script: " + name);
        }
        std::istringstream classes(name == "class" ? value : "");
        for (std::string each; classes >> each;) {
            ++mClasses[each];
        }
        rest = parts.suffix();
    }
    if (rest.find_first_not_of(" \n/>") != std::string::npos) {
        fail("no attribute: " + rest.substr(0, 100));
    }
}

void Markup::readText(const std::string& text) {
    static const std::map<std::string, std::string> kReferences = {
            {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}};
    const bool isStyle = !mOpen.empty() && mOpen.back() == "style";
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '&') {
            mText += isStyle ? "" : std::string(1, text[at] == '\n' ? ' ' : text[at]);
            continue;
        }
        const size_t end = text.find(';', at);
        const auto known = kReferences.find(text.substr(at, end - at + 1));
        if (known == kReferences.end() && text.compare(at, 2, "&#") != 0) {
            fail("no reference: " + text.substr(at, 20));
            return;
        }
        mText += known == kReferences.end() ? "?" : known->second;
        at = end;
    }
}

void Markup::checkLinks() {
    for (const std::string& link : mLinks) {
        if (mFault.empty() && mIds.count(link) == 0) {
            fail("a link to nothing: " + link);
        }
    }
}

void Markup::fail(const std::string& what) {
    if (mFault.empty()) {
        mFault = "at " + std::to_string(mAt) + ": " + what;
    }
}

}  // namespace vdrdump::test
