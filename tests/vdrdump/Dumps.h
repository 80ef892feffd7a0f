#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "records/VDRData2.h"
#include "tools/read/DamageLog.h"

// The words in which the tests speak of dumps.
namespace vdrdump::test {

using Frame = vdr2::VDRData2;

Frame frame(uint32_t number);
// Anything the pipeline may fill in: frame 2, other numbers of any value, names without a comma, at
// most `mostElements` elements in each array.
Frame randomFrame(std::mt19937_64& random, unsigned mostElements);

// What the recorder would write.
std::string binaryOf(const std::vector<Frame>& frames);
std::string lineOf(const Frame& frame);
std::string textOf(const std::vector<Frame>& frames);

// What the csv export makes of a dump.
struct Csv {
    std::vector<std::vector<std::string>> rows;  // without the header, quotes taken off
    bool isWhole = false;                        // no damage

    // The cells of a record in the order of a text line: arrays spread out, without the keys.
    std::string flat(size_t row) const;
};
Csv csvOf(const std::string& dump);

// How many findings of each kind reading the dump gives.
uint64_t countDamage(const std::string& dump, Damage damage);

// A folder of its own that is gone with the test.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string path(const std::string& name) const { return mPath + "/" + name; }
    // Makes a file and gives its path.
    std::string file(const std::string& name, const std::string& bytes) const;

private:
    std::string mPath;
};

std::string contentsOf(const std::string& path);

}  // namespace vdrdump::test
