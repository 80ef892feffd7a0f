#include "tools/read/BinaryReader.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tools/read/checkCounts.h"

namespace vdrdump {
namespace {

constexpr size_t kBlock = zk::kFrameRecordSize;

// Records that begin at `at` end where others begin at `inStep`. What counts beside the frame
// numbers, as values in a record do, goes on.
bool countsOn(const BlockView& view, size_t at, size_t inStep) {
    return !view.holds(at + inStep, sizeof(uint32_t)) ||
           BlockView::isNear(view.number(at), view.number(at + inStep));
}

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
            (view.holds(kBlock, sizeof(uint32_t)) &&
             BlockView::follows(record.frame(), view.number(kBlock)))) {
            mLast = record.frame();
        }
        mIsFirst = false;
        checkCounts(record, mDamage);
        return true;
    }
}

BinaryReader::Step BinaryReader::step(const BlockView& view) const {
    if (view.holds(0, 2 * kBlock) && BlockView::isNear(mLast, view.number(0)) &&
        BlockView::follows(view.number(0), view.number(kBlock)) && view.isSound(0)) {
        return {Step::Kind::Record, kBlock};
    }
    const size_t zeros = view.zeros();
    if (zeros >= std::min(kBlock, view.size())) {
        return {Step::Kind::Zeros, zeros};
    }
    return outOfStep(view);
}

// The block in front does not simply count on. It is whole when those behind it bear that out, it
// is cut when another record begins inside it, and it is none when neither look nor number is that
// of a record.
BinaryReader::Step BinaryReader::outOfStep(const BlockView& view) const {
    const bool isWhole = view.holds(0);
    const bool isNext = view.holds(0, sizeof(uint32_t)) && BlockView::isNear(mLast, view.number(0));
    const bool isRecord = isNext || (isWhole ? view.hasTail(0) : mPassed == 0);
    const uint32_t last = isNext || (mIsFirst && isWhole) ? view.number(0) : mLast;
    const Step whole{isRecord ? Step::Kind::Record : Step::Kind::Pass, kBlock};
    const size_t inStep = isWhole ? view.findInStep(kBlock, last) : BlockView::kNowhere;
    const bool isBorneOut = inStep != BlockView::kNowhere;
    const bool isTrusted = isBorneOut && (!mIsFirst || view.isChain(0, last));
    if (isTrusted && inStep == kBlock) {
        return whole;
    }
    const size_t end = std::min(kBlock, view.size());
    const size_t at = view.findChain(1, end, last);
    if (at != end && !(isTrusted && countsOn(view, at, inStep))) {
        const bool isCut = BlockView::isNear(view.number(at), view.number(0));
        return {isCut ? Step::Kind::CutRecord : Step::Kind::Pass, at};
    }
    if (isBorneOut) {
        return whole;
    }
    if (!isRecord) {
        return {Step::Kind::Pass, end};
    }
    return {isWhole ? Step::Kind::Record : Step::Kind::CutRecord, end};
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
