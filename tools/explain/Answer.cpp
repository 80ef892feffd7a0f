#include "tools/explain/Answer.h"

#include <algorithm>

#include "tools/explain/lossLines.h"

namespace vdrdump {
namespace {

constexpr size_t kMostListed = 32;

std::string countText(const Explanations& explanations, size_t count) {
    const std::string text = std::to_string(count) + " losses";
    return explanations.unlisted == 0 ? text
                                      : text + ", and " + std::to_string(explanations.unlisted) +
                                                " more frames without a record behind them";
}

}  // namespace

Answer answerOf(const Explanations& explanations, const NodeNames& names) {
    const auto& losses = explanations.losses;
    const size_t count = losses.size() + explanations.unexplained;
    Answer answer;
    if (count == 0) {
        answer.remarks = {
                "No loss is known: no file is named after one, and no binary dump has a gap.",
                "--lost N explains frame N; --log LOGCAT takes the losses that a log announces."};
        return answer;
    }
    const bool namesSession = std::any_of(losses.begin(), losses.end(), [](const auto& each) {
        return each.loss.history->session > 1;
    });
    for (size_t i = 0; i < losses.size() && i < kMostListed; ++i) {
        answer.losses.push_back(lossLines(losses[i], names, namesSession));
    }
    answer.more = count - answer.losses.size();
    answer.count = count == 1 ? "" : countText(explanations, count);
    if (count > Answer::kMostInFull) {
        answer.remarks.push_back("These were the first " + std::to_string(Answer::kMostInFull) +
                                 "; --lost N explains another, --json lists all.");
    }
    if (explanations.wasFull) {
        answer.remarks.emplace_back(
                "More records lie near losses than are kept; the last files were left out.");
    }
    return answer;
}

}  // namespace vdrdump
