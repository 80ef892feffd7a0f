#pragma once

#include <map>
#include <string>
#include <vector>

namespace vdrdump::test {

// A page as a strict reader takes it: every element closed in its order, every attribute in quotes,
// no character that would be read as markup, no name given twice, no link that leads nowhere.
class Markup {
public:
    explicit Markup(const std::string& page);

    // What is wrong, with where; empty where nothing is.
    const std::string& fault() const { return mFault; }
    // Elements of a class, and elements of a kind.
    size_t ofClass(const std::string& name) const;
    size_t ofKind(const std::string& name) const;
    // What is to be read between all tags, with references resolved and no line ends.
    const std::string& text() const { return mText; }

private:
    void readTag(const std::string& tag);
    void readAttributes(const std::string& tag, size_t at);
    void readText(const std::string& text);
    void checkLinks();
    void fail(const std::string& what);

    std::string mFault;
    size_t mAt = 0;
    std::vector<std::string> mOpen;
    std::map<std::string, size_t> mKinds;
    std::map<std::string, size_t> mClasses;
    std::map<std::string, size_t> mIds;
    std::vector<std::string> mLinks;
    std::string mText;
};

}  // namespace vdrdump::test
