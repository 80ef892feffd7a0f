#include "tools/record/nearestName.h"

#include <algorithm>
#include <cctype>

namespace vdrdump {
namespace {

char lower(char each) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
}

// Letters to insert, take away, change, or swap with their neighbour; case is no difference.
size_t distance(const std::string& a, const std::string& b) {
    std::vector<size_t> before;
    std::vector<size_t> above(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        above[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        std::vector<size_t> row(b.size() + 1, i);
        for (size_t j = 1; j <= b.size(); ++j) {
            const bool isSame = lower(a[i - 1]) == lower(b[j - 1]);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                lower(a[i - 2]) == lower(b[j - 1])) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
        before = std::move(above);
        above = std::move(row);
    }
    return above[b.size()];
}

bool isPart(const std::string& word, const std::string& of) {
    const auto isSame = [](char a, char b) { return lower(a) == lower(b); };
    return word.size() >= 3 &&
           std::search(of.begin(), of.end(), word.begin(), word.end(), isSame) != of.end();
}

size_t differenceInLength(const std::string& a, const std::string& b) {
    return std::max(a.size(), b.size()) - std::min(a.size(), b.size());
}

}  // namespace

std::string nearestName(const std::string& word, const std::vector<std::string>& candidates) {
    std::string nearest;
    size_t least = std::max<size_t>(2, word.size() / 3) + 1;
    for (const std::string& each : candidates) {
        const size_t differing = distance(word, each);
        const bool isAsNear = differing == least && !nearest.empty() &&
                              differenceInLength(word, each) < differenceInLength(word, nearest);
        if (differing < least || isAsNear) {
            least = differing;
            nearest = each;
        }
    }
    for (size_t i = 0; nearest.empty() && i < candidates.size(); ++i) {
        nearest = isPart(word, candidates[i]) ? candidates[i] : "";
    }
    return nearest;
}

}  // namespace vdrdump
