#include "tools/read/BinaryReader.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tools/read/checkCounts.h"

namespace vdrdump {
namespace {

constexpr size_t kBlock = zk::kFrameRecordSize;

}  // namespace

BinaryReader::BinaryReader(ByteWindow& window, DamageLog& damage)
      : mWindow(window), mDamage(damage) {}

bool BinaryReader::next(Record& record) {
    while (true) {
        const size_t available = mWindow.ensure(kLookAhead + 1);
        if (available == 0) {
            reportPassed("the end");
            return false;
        }
        const BlockView view(mWindow.data(), std::min(available, kLookAhead),
                             available <= kLookAhead);
        const Step next = step(view);
        if (next.kind == Step::Kind::Pass) {
            pass(next.size);
            continue;
        }
        reportPassed("the next whole record");
        record.offset = mWindow.offset();
        switch (next.kind) {
            case Step::Kind::Zeros:
                skipZeros();
                continue;
            case Step::Kind::CutRecord:
                giveCut(record, next.size, view.isEnd() && next.size == view.size());
                break;
            default:
                record.bytes = mWindow.data();
                record.known = sizeof(Layout);
                mWindow.consume(kBlock);
        }
        record.index = mIndex++;
        if (record.known < sizeof(Layout::frameNumber)) {
            continue;
        }
        // A damaged number is nothing to go on from.
        if (mIsFirst || BlockView::isNear(mLast, record.frame()) ||
            (view.holds(next.size, sizeof(uint32_t)) &&
             BlockView::follows(record.frame(), view.number(next.size)))) {
            mLast = record.frame();
        }
        mIsFirst = false;
        checkCounts(record, mDamage);
        return true;
    }
}

BinaryReader::Step BinaryReader::step(const BlockView& view) const {
    if (countsOn(view)) {
        return {Step::Kind::Record, kBlock};
    }
    const size_t zeros = view.zeros();
    if (zeros >= std::min(kBlock, view.size())) {
        return {Step::Kind::Zeros, zeros};
    }
    return outOfStep(view);
}

// Two are too few: behind a cut record, the next place in step lies inside another, where a number
// may be read that goes on.
bool BinaryReader::countsOn(const BlockView& view) const {
    constexpr size_t kEnd = BlockView::kBeyondDoubt * kBlock;
    bool countsOn = view.holds(0, kEnd) && BlockView::isNear(mLast, view.number(0));
    for (size_t at = 0; countsOn && at < kEnd; at += kBlock) {
        countsOn = view.isSound(at) &&
                   (at == 0 || BlockView::follows(view.number(at - kBlock), view.number(at)));
    }
    return countsOn;
}

// The block in front does not simply count on. It is cut when another record begins inside it, and
// it is none when neither look nor number is that of a record.
BinaryReader::Step BinaryReader::outOfStep(const BlockView& view) const {
    const bool isWhole = view.holds(0);
    const bool isNext = view.holds(0, sizeof(uint32_t)) && BlockView::isNear(mLast, view.number(0));
    const bool isRecord = isNext || (isWhole ? view.hasTail(0) : mPassed == 0);
    const size_t end = std::min(kBlock, view.size());
    const size_t at = isWhole ? findRecordInside(view, isNext) : end;
    if (at != end) {
        const bool isCut = BlockView::isNear(view.number(at), view.number(0));
        return {isCut ? Step::Kind::CutRecord : Step::Kind::Pass, at};
    }
    if (!isRecord) {
        return {Step::Kind::Pass, end};
    }
    return {isWhole ? Step::Kind::Record : Step::Kind::CutRecord, end};
}

// Values in a record may count as the frame numbers do, so that a record seems to begin at each of
// them, all along the dump; those in step then count on as well, but for late frames, gaps and ends
// of sessions. Behind a cut record hardly anything counts on in step, at most a value or two that
// happen to. Hence the place inside must be borne out by far more.
size_t BinaryReader::findRecordInside(const BlockView& view, bool isNext) const {
    const uint32_t last = isNext || mIsFirst ? view.number(0) : mLast;
    const size_t needed = 2 * view.countFrom(kBlock, last) + 2;
    if (needed > BlockView::kCompared + 1) {  // more than any place inside can have
        return kBlock;
    }
    const size_t at = view.findChain(1, kBlock, last);
    if (at == kBlock) {
        return kBlock;
    }
    // Where the first record is cut, its number may be, too: nothing is known to go on from.
    const uint32_t before = mIsFirst ? view.number(at) - 1 : last;
    return view.countFrom(at, before) >= needed ? at : kBlock;
}

void BinaryReader::pass(size_t size) {
    mPassed += size;
    mIndex += size == kBlock ? 1 : 0;
    mWindow.consume(size);
}

void BinaryReader::reportPassed(const char* upTo) {
    if (mPassed == 0) {
        return;
    }
    if (mDamage.add(Damage::PassedBytes)) {
        mDamage.describe(mWindow.offset() - mPassed,
                         "a record, passed " + std::to_string(mPassed) +
                                 (mPassed == 1 ? " byte to " : " bytes to ") + upTo);
    }
    mDamage.addPassed(mPassed);
    mPassed = 0;
}

void BinaryReader::skipZeros() {
    const uint64_t offset = mWindow.offset();
    uint64_t bytes = 0;
    size_t zeros = 0;
    do {
        const size_t available = std::min(mWindow.ensure(kBlock), kBlock);
        zeros = BlockView(mWindow.data(), available, false).zeros();
        if (zeros < available) {
            break;
        }
        bytes += zeros;
        mWindow.consume(zeros);
    } while (zeros != 0);
    const uint64_t records = (bytes + kBlock - 1) / kBlock;
    mIndex += records;
    if (mDamage.add(Damage::ZeroRecord, records)) {
        const bool isOne = records == 1;
        mDamage.describe(offset, std::string(isOne ? "a record" : "records") + ", found " +
                                         std::to_string(bytes) +
                                         " bytes of zeros in the place of " +
                                         std::to_string(records));
    }
}

void BinaryReader::giveCut(Record& record, size_t size, bool isLast) {
    if (mDamage.add(Damage::CutRecord)) {
        const std::string found = std::to_string(size);
        mDamage.describe(record.offset,
                         "a record of " + std::to_string(kBlock) + " bytes, found " +
                                 (isLast ? "the last " + found + " of the file"
                                         : found + " and the next whole record behind them"));
    }
    if (!isLast) {
        mDamage.addPassed(size);
    }
    std::memset(mCut, 0, sizeof(mCut));
    std::memcpy(mCut, mWindow.data(), size);
    mWindow.consume(size);
    record.bytes = mCut;
    record.known = std::min(size, sizeof(Layout));
}

NumbersAhead BinaryReader::ahead() {
    NumbersAhead ahead;
    // The record in front lies in the window: it must not move.
    const size_t available = mWindow.available();
    const BlockView view(mWindow.data(), available, false);
    for (size_t at = 0; !ahead.isFull() && view.holds(at, sizeof(uint32_t)); at += kBlock) {
        const bool isZero = view.number(at) == 0 && view.holds(at) &&
                            BlockView(mWindow.data() + at, kBlock, false).zeros() == kBlock;
        if (!isZero) {
            ahead.add(view.number(at));
        }
    }
    return ahead;
}

}  // namespace vdrdump
