// Finding the next record: dumps that are cut, filled and written over in places that the input
// chooses. Whatever was done, four records in a row that nobody touched are found, each at its
// place and with its number.

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "records/frameData.h"
#include "testing/InputBytes.h"
#include "tools/read/MemorySource.h"
#include "tools/sink/DumpPass.h"

namespace {

constexpr size_t kBlock = zk::kFrameRecordSize;
constexpr size_t kRun = 4;  // untouched records that must be found

uint32_t mixed(uint32_t value) {
    value = (value ^ 61) ^ (value >> 16);
    value *= 9;
    value ^= value >> 4;
    value *= 0x27d4eb2d;
    return value ^ (value >> 15);
}

struct Piece {
    std::string bytes;
    uint32_t number;
    bool isUntouched;
};

// Frames in a row with `nodes` nodes and stamps that look like stamps.
Piece recordOf(uint32_t number, uint8_t nodes) {
    vdrdump::Layout record{};
    record.frameNumber = number;
    record.cslInfo = {mixed(number), 1000000000ULL + number * 33333333ULL};
    record.zoomRatio = 1.5F;
    record.nodeInfoCount = static_cast<uint8_t>(nodes % 61);
    for (uint32_t i = 0; i < record.nodeInfoCount; ++i) {
        const uint64_t stamp = record.cslInfo.stamp + i * 1000000;
        record.nodeInfo[i] = {{1, 0x1000 + i, 0},
                              {stamp, stamp + 10, stamp + 500000, stamp + 600000}};
    }
    std::string bytes(kBlock, '\0');
    std::memcpy(bytes.data(), &record, sizeof(record));
    return {bytes, number, true};
}

// One of: cut short, gone, zeros, noise in its place, noise in front, a bit of its number.
void damage(Piece& piece, uint8_t how, uint16_t where) {
    if (!piece.isUntouched) {
        return;
    }
    const size_t at = where % kBlock;
    piece.isUntouched = false;
    std::string noise;
    for (uint32_t i = 0; i < at; ++i) {
        noise += static_cast<char>(mixed(where + i) | 0x80);
    }
    switch (how % 6) {
        case 0:
            piece.bytes.resize(at);
            break;
        case 1:
            piece.bytes.clear();
            break;
        case 2:
            piece.bytes.assign(kBlock, '\0');
            break;
        case 3:
            piece.bytes.replace(0, at, noise);
            break;
        case 4:
            piece.bytes.insert(0, noise);
            break;
        default:
            piece.bytes[at % 4] = static_cast<char>(piece.bytes[at % 4] ^ (1 << (where >> 12 & 7)));
    }
}

class NumbersSink : public vdrdump::RecordSink {
public:
    void beginFile(const vdrdump::DumpFile&) override {}
    void add(const vdrdump::Record& record) override {
        if (record.known == sizeof(vdrdump::Layout)) {
            numbers[record.offset] = record.frame();
        }
    }
    void endSession(const vdrdump::SessionSummary&) override {}
    void endFile(const vdrdump::DumpEnd&) override {}
    bool finish() override { return true; }
    bool isDone() const override { return false; }

    std::map<uint64_t, uint32_t> numbers;  // by offset
};

void checkFound(const std::vector<Piece>& pieces, const NumbersSink& sink) {
    uint64_t offset = 0;
    for (size_t i = 0; i < pieces.size(); ++i) {
        bool isInRun = i + kRun <= pieces.size();
        for (size_t j = i; isInRun && j < i + kRun; ++j) {
            isInRun = pieces[j].isUntouched;
        }
        const auto found = sink.numbers.find(offset);
        if (isInRun && (found == sink.numbers.end() || found->second != pieces[i].number)) {
            std::abort();
        }
        offset += pieces[i].bytes.size();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    zk::test::InputBytes input(data, size);
    const auto first = 1 + input.take<uint32_t>() % 100000;
    const uint8_t nodes = input.byte();
    std::vector<Piece> pieces;
    for (uint32_t i = 0; i < 24; ++i) {
        pieces.push_back(recordOf(first + i, nodes));
    }
    for (int i = 0; i < 6 && !input.empty(); ++i) {
        const uint8_t which = input.byte();
        const uint8_t how = input.byte();
        damage(pieces[which % pieces.size()], how, input.take<uint16_t>());
    }
    std::string dump;
    for (const Piece& piece : pieces) {
        dump += piece.bytes;
    }
    vdrdump::Progress progress({}, false);
    NumbersSink sink;
    vdrdump::MemorySource source(dump.data(), dump.size());
    vdrdump::DumpPass(sink, progress, nullptr).readSource("dump", source);
    checkFound(pieces, sink);
    return 0;
}
