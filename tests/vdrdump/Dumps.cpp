#include "tests/vdrdump/Dumps.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/host/LogControl.h"
#include "records/frameData.h"
#include "records/makeFrameContent.h"
#include "tools/read/MemorySource.h"
#include "tools/sink/CsvSink.h"
#include "tools/sink/DumpPass.h"

namespace vdrdump::test {
namespace {

constexpr size_t kKeys = 4;  // file, lostFrame, session, record

void fillName(std::mt19937_64& random, char* name, size_t size) {
    static constexpr char kLetters[] = "ABCxyz019_-.";
    const size_t length = random() % size;
    std::memset(name, 0, size);
    for (size_t i = 0; i < length; ++i) {
        name[i] = kLetters[random() % (sizeof(kLetters) - 1)];
    }
}

std::vector<std::vector<std::string>> parseCsv(const std::string& text) {
    std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
    bool isQuoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char each = text[i];
        if (each == '"' && isQuoted && text.compare(i, 2, "\"\"") == 0) {
            rows.back().back() += text[++i];
        } else if (each == '"') {
            isQuoted = !isQuoted;
        } else if (each == ',' && !isQuoted) {
            rows.back().emplace_back();
        } else if (each == '\n' && !isQuoted) {
            rows.emplace_back(1);
        } else {
            rows.back().back() += each;
        }
    }
    rows.pop_back();
    return rows;
}

class CountingSink : public RecordSink {
public:
    explicit CountingSink(Damage damage) : mDamage(damage) {}
    void beginFile(const DumpFile&) override {}
    void add(const Record&) override {}
    void endSession(const SessionSummary&) override {}
    void endFile(const DumpEnd& end) override { count = end.damage.count(mDamage); }
    bool finish() override { return true; }
    bool isDone() const override { return false; }

    uint64_t count = 0;

private:
    const Damage mDamage;
};

bool pass(const std::string& dump, RecordSink& sink) {
    Progress progress({}, false);
    MemorySource source(dump.data(), dump.size());
    const bool isWhole = DumpPass(sink, progress, nullptr).readSource("dump", source);
    return sink.finish() && isWhole;
}

}  // namespace

Frame frame(uint32_t number) {
    Frame result{};
    result.frameNumber = number;
    return result;
}

Frame randomFrame(std::mt19937_64& random, unsigned mostElements) {
    Frame result;
    for (size_t i = 0; i < sizeof(result); ++i) {
        reinterpret_cast<uint8_t*>(&result)[i] = static_cast<uint8_t>(random());
    }
    result.frameNumber = 2;  // a dump is told by its numbers and its zoom
    result.zoomRatio = 1.0F + static_cast<float>(random() % 1000) / 100;
    const auto count = [&](size_t capacity) {
        return static_cast<uint8_t>(random() % (std::min<size_t>(mostElements, capacity) + 1));
    };
    result.featureRequestStateInfoCount = count(15);
    result.featureMessageTypeInfoCount = count(15);
    result.pluginAlgoCostTimeCount = count(30);
    result.semantAlgoCostTimeCount = count(30);
    result.nodeInfoCount = count(60);
    result.awbInfo_qawb_cap_saCount = count(10);
    for (auto& algo : result.pluginAlgoCostTime) {
        fillName(random, algo.name, sizeof(algo.name));
    }
    for (auto& algo : result.semantAlgoCostTime) {
        fillName(random, algo.name, sizeof(algo.name));
    }
    for (auto& info : result.awbInfo_qawb_cap_sa) {
        fillName(random, info.name, sizeof(info.name));
    }
    auto& item = result.memoryAllocTimeoutInfo;
    fillName(random, item.itemName, sizeof(item.itemName));
    // Printed without a sign by the line and with one by vdrdump: compared in a test of its own.
    result.sysStatusInfo.cpu0Freq &= INT32_MAX;
    result.sysStatusInfo.cpu4Freq &= INT32_MAX;
    result.sysStatusInfo.cpu7Freq &= INT32_MAX;
    result.sysStatusInfo.shellFrontTemp &= INT32_MAX;
    result.sysStatusInfo.shellBackTemp &= INT32_MAX;
    result.sysStatusInfo.shellFrameTemp &= INT32_MAX;
    return result;
}

std::string binaryOf(const std::vector<Frame>& frames) {
    std::string bytes(frames.size() * zk::kFrameRecordSize, '\0');
    for (size_t i = 0; i < frames.size(); ++i) {
        std::memcpy(&bytes[i * zk::kFrameRecordSize], &frames[i], sizeof(Frame));
    }
    return bytes;
}

std::string lineOf(const Frame& frame) {
    zk::host::setLogOutput(nullptr);  // lines that do not fit are made on purpose
    char line[zk::kFrameRecordSize] = {};
    zk::makeFrameContent(2, binaryOf({frame}).data(), line);
    return line;
}

std::string textOf(const std::vector<Frame>& frames) {
    std::string text;
    for (const Frame& each : frames) {
        text += lineOf(each);
    }
    return text;
}

std::string Csv::flat(size_t row) const {
    std::string text;
    for (size_t i = kKeys; i < rows.at(row).size(); ++i) {
        const std::string& cell = rows[row][i];
        if (cell == "[]") {
            continue;
        }
        for (const char each : cell) {
            if (cell[0] != '[' || std::strchr("[]\"", each) == nullptr) {
                text += each;
            }
        }
        text += ',';
    }
    return text;
}

Csv csvOf(const std::string& dump) {
    const int file = memfd_create("csv", 0);  // written thousands of times: no disk
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    Csv result;
    {
        CsvSink sink(path, FieldChoice());
        result.isWhole = pass(dump, sink);
    }
    result.rows = parseCsv(contentsOf(path));
    result.rows.erase(result.rows.begin());
    close(file);
    return result;
}

uint64_t countDamage(const std::string& dump, Damage damage) {
    CountingSink sink(damage);
    pass(dump, sink);
    return sink.count;
}

TempFolder::TempFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "vdrdump-XXXXXX").string();
    mPath = mkdtemp(path.data()) != nullptr ? path : "";
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

std::string TempFolder::file(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
}

std::string contentsOf(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace vdrdump::test
