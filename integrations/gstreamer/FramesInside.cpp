#include "integrations/gstreamer/FramesInside.h"

#include <algorithm>

namespace vdrgst {
namespace {

// Elements that count in other units (microseconds of a driver, 90 kHz of a network) round times;
// the frames of 1000 a second are twice as far apart.
constexpr int64_t kRounding = 500'000;

// No codec that this might be puts frames off any further.
constexpr uint32_t kDeepestReordering = 16;

int64_t distance(int64_t one, int64_t other) {
    return one > other ? one - other : other - one;
}

bool haveTimes(const BufferMark& one, const BufferMark& other) {
    return one.presentation != kNoTime && other.presentation != kNoTime;
}

bool haveDecodingTimes(const BufferMark& one, const BufferMark& other) {
    return one.decoding != kNoTime && other.decoding != kNoTime;
}

// What takes a frame apart gives the time to the first piece only.
bool isLaterPiece(const FramesInside::Entry& entry, const BufferMark& mark) {
    return entry.mark.presentation != kNoTime && mark.presentation == kNoTime;
}

}  // namespace

// Of a frame in pieces often only the first carries its times.
void FramesInside::Entry::addPiece(const BufferMark& piece) {
    ++calls;
    ++pieces;
    mark.memory = piece.memory;
    if (piece.presentation != kNoTime) {
        mark.presentation = piece.presentation;
    }
    if (piece.decoding != kNoTime) {
        mark.decoding = piece.decoding;
    }
}

FramesInside::Entry& FramesInside::add(uint32_t frame, const BufferMark& mark, size_t passage) {
    return mEntries.emplace_back(Entry{frame, mark, passage});
}

FramesInside::Entry* FramesInside::find(uint32_t frame) {
    const auto found = std::find_if(mEntries.begin(), mEntries.end(),
                                    [frame](const Entry& entry) { return entry.frame == frame; });
    return found != mEntries.end() ? &*found : nullptr;
}

FramesInside::Entry* FramesInside::at(int64_t presentation) {
    return nearest(&BufferMark::presentation, presentation);
}

// Of equally near ones the first that has not left yet.
FramesInside::Entry* FramesInside::nearest(int64_t BufferMark::*kind, int64_t time) {
    Entry* nearest = nullptr;
    int64_t least = kRounding + 1;
    for (Entry& entry : mEntries) {
        if (time == kNoTime || entry.mark.*kind == kNoTime) {
            continue;
        }
        const int64_t away = distance(entry.mark.*kind, time);
        if (away < least || (away == least && nearest != nullptr && nearest->isOut)) {
            nearest = &entry;
            least = away;
        }
        if (away == 0 && !entry.isOut) {
            break;
        }
    }
    return nearest;
}

FramesInside::Entry* FramesInside::known(const BufferMark& mark) {
    // Of a frame in pieces the later ones may have the decoding time only.
    Entry* const entry = mark.presentation != kNoTime
                                 ? at(mark.presentation)
                                 : nearest(&BufferMark::decoding, mark.decoding);
    if (entry != nullptr || mark.memory == nullptr) {
        return entry;
    }
    // Elements that only change times pass the memory on; the newest, since memory is used again.
    const auto same = std::find_if(mEntries.rbegin(), mEntries.rend(), [&mark](const Entry& other) {
        return other.mark.memory == mark.memory;
    });
    return same != mEntries.rend() ? &*same : nullptr;
}

FramesInside::Entry* FramesInside::likely(const BufferMark& mark, uint32_t calledWith) {
    Entry* const called = mOrder == Order::kArrival ? find(calledWith) : nullptr;
    if (called != nullptr && (!called->isOut || isLaterPiece(*called, mark))) {
        return called;
    }
    // What keeps the order lets all pieces of a frame go before any of the next; a decoder joins
    // them to one picture.
    const bool isByPiece = mOrder == Order::kArrival;
    const auto oldest =
            std::find_if(mEntries.begin(), mEntries.end(), [isByPiece](const Entry& entry) {
                return isByPiece ? entry.pieces > 0 : !entry.isOut;
            });
    // A frame whose time is known leaves with that time, or its element makes frames of its own.
    const bool isPossible = oldest != mEntries.end() && !haveTimes(oldest->mark, mark) &&
                            !haveDecodingTimes(oldest->mark, mark);
    return isPossible ? &*oldest : nullptr;
}

bool FramesInside::isOvertaken(Entry& entry, const BufferMark& mark) const {
    if (mOrder == Order::kArrival) {
        return true;
    }
    ++entry.passedBy;
    if (haveDecodingTimes(entry.mark, mark)) {
        return entry.mark.decoding < mark.decoding;
    }
    // What is encoded goes in order of decoding times, and no frame is decoded after it is shown:
    // nothing that was to be shown before this decoding time is still to come.
    if (mark.decoding != kNoTime && entry.mark.presentation != kNoTime) {
        return entry.mark.presentation < mark.decoding;
    }
    if (haveTimes(entry.mark, mark)) {
        return entry.mark.presentation < mark.presentation;
    }
    return entry.passedBy > kDeepestReordering;
}

void FramesInside::findOvertaken(const Entry& leaver, const BufferMark& mark,
                                 std::vector<uint32_t>& overtaken) {
    for (Entry& entry : mEntries) {
        if (&entry == &leaver) {
            return;
        }
        if (entry.calls == 0 && isOvertaken(entry, mark)) {
            overtaken.push_back(entry.frame);
        }
    }
}

void FramesInside::findResting(std::vector<uint32_t>& resting) const {
    for (const Entry& entry : mEntries) {
        if (entry.calls == 0) {
            resting.push_back(entry.frame);
        }
    }
}

void FramesInside::remove(uint32_t frame) {
    const auto found = std::find_if(mEntries.begin(), mEntries.end(),
                                    [frame](const Entry& entry) { return entry.frame == frame; });
    if (found != mEntries.end()) {
        mEntries.erase(found);
    }
}

}  // namespace vdrgst
