#include "tools/explain/findStuck.h"

#include <algorithm>

#include "tools/explain/nodesOf.h"

namespace vdrdump {
namespace {

// How often a node was seen, and how often with an end, in the window.
struct Habit {
    size_t frames = 0;
    size_t finished = 0;
    size_t handedOn = 0;
    size_t place = 0;  // in the latest record

    // In most frames: an output node may never hand on.
    bool finishes() const { return 2 * finished > frames; }
    bool handsOn() const { return 2 * handedOn > frames; }
};
using Habits = std::map<NodeIds, Habit>;

struct Window {
    Habits habits;
    size_t frames = 0;

    // Whether frames come through it as a rule, and not only captures or every other one.
    bool isUsual(const Habit& habit) const {
        return 10 * habit.frames >= 9 * (frames - 1) && (habit.finishes() || habit.handsOn());
    }
};

constexpr size_t kFewest = 4;  // frames from which habits can be told

Window habitsOf(const FrameMap& frames, const FrameRange& range) {
    Window window;
    for (auto at = frames.lower_bound(range.first); at != frames.end() && at->first <= range.last;
         ++at) {
        const std::vector<NodeStamps> nodes = nodesOf(at->second->view());
        if (nodes.empty() || !at->second->view().isWhole()) {
            continue;
        }
        ++window.frames;
        for (size_t i = 0; i < nodes.size(); ++i) {
            Habit& habit = window.habits[nodes[i].ids];
            ++habit.frames;
            habit.finished += nodes[i].finished != 0 ? 1 : 0;
            habit.handedOn += nodes[i].handedOn != 0 ? 1 : 0;
            habit.place = std::max(habit.place, i);
        }
    }
    return window;
}

StuckAt::Reached reachedBy(const NodeStamps& node) {
    return node.finished != 0  ? StuckAt::Reached::Finished
           : node.started != 0 ? StuckAt::Reached::Started
           : node.queued != 0  ? StuckAt::Reached::Queued
                               : StuckAt::Reached::NotQueued;
}

bool isStuck(const NodeStamps& node, const Habit& habit) {
    return (node.handedOn == 0 && habit.handsOn()) ||
           (node.handedOn == 0 && node.finished == 0 && habit.finishes());
}

// Usual nodes in their order; those without an entry in the record count as never reached.
std::vector<NodeStamps> wayOf(const Record& record, const Window& window) {
    std::vector<NodeStamps> way = nodesOf(record);
    std::vector<std::pair<size_t, NodeIds>> absent;
    for (const auto& [ids, habit] : window.habits) {
        const bool isThere = std::any_of(
                way.begin(), way.end(), [&ids = ids](const auto& node) { return node.ids == ids; });
        if (!isThere && window.isUsual(habit)) {
            absent.emplace_back(habit.place, ids);
        }
    }
    std::sort(absent.begin(), absent.end());
    for (const auto& [place, ids] : absent) {
        NodeStamps node;
        node.ids = ids;
        way.insert(way.begin() + static_cast<std::ptrdiff_t>(std::min(place, way.size())), node);
    }
    return way;
}

std::optional<StuckAt> stuckAt(uint32_t frame, const Record& record, const Window& window) {
    if (nodesOf(record).empty() || !record.isWhole()) {
        return std::nullopt;  // nothing is known of its way
    }
    std::optional<StuckAt> stuck;
    bool wentOn = false;
    for (const NodeStamps& node : wayOf(record, window)) {
        const Habit& habit = window.habits.at(node.ids);
        if (stuck) {
            stuck->nodesBehind += node.last() == 0 && window.isUsual(habit) ? 1 : 0;
            wentOn |= node.last() != 0;
        } else if (window.isUsual(habit) && isStuck(node, habit)) {
            stuck = StuckAt{frame, node.ids, reachedBy(node), std::nullopt, 0};
        }
    }
    // A frame may pass a node by and go on.
    const bool passedBy = stuck && wentOn && stuck->reached == StuckAt::Reached::NotQueued;
    return passedBy ? std::nullopt : stuck;
}

}  // namespace

std::optional<StuckAt> findStuck(const FrameMap& frames, const Measurements& measurements,
                                 const FrameRange& lost, const FrameRange& window) {
    const Window habits = habitsOf(frames, window);
    if (habits.frames < kFewest) {
        return std::nullopt;
    }
    for (auto at = frames.upper_bound(lost.last); at != frames.begin();) {
        --at;
        if (at->first < window.first) {
            break;
        }
        if (auto stuck = stuckAt(at->first, at->second->view(), habits)) {
            const Subject work{Quantity::NodeWork, stuck->node, ""};
            const Measurements::Series* series = measurements.find(work);
            if (series != nullptr && stuck->reached == StuckAt::Reached::Finished) {
                stuck->work = Measurements::compare(work, *series, stuck->frame, window);
            }
            return stuck;
        }
    }
    return std::nullopt;
}

}  // namespace vdrdump
