#include "livephoto/LivePhotoRequest.h"

#include <gtest/gtest.h>

#include <string>

namespace zk::test {
namespace {

struct Text {
    const char* name;
    std::string json;
    std::string expected;  // "id start end size"
};

std::string parsed(const std::string& json) {
    const LivePhotoRequest request = LivePhotoRequest::parse(json);
    return request.id + " " + std::to_string(request.startFrame) + " " +
           std::to_string(request.endFrame) + " " + std::to_string(request.bufferSize);
}

const std::string kRead = "a 0 0 0";
const std::string kEmpty = " 0 0 0";

// The parser ends the process at a value below its thousandth level.
TEST(LivePhotoRequestTest, UntrustedText_ReadsAsFarAsItCan) {
    const std::string member = R"({"id":"a","x":)";
    const std::string brackets(998, '[');
    const std::string blanks(16384 - 10, ' ');
    const Text rows[] = {
            {"whole", R"({"id":"a","startFrame":1,"endFrame":4294967295,"bufferSize":4096})",
             "a 1 4294967295 4096"},
            {"no object", "7", kEmpty},
            {"id an array", R"({"id":["a"],"startFrame":1})", " 1 0 0"},
            {"out of range", R"({"startFrame":-1,"endFrame":4294967296,"bufferSize":1e30})",
             kEmpty},
            {"other types", R"({"startFrame":"1","endFrame":true,"bufferSize":[1]})", " 0 1 0"},
            {"half, with comments",
             "{\"id\":/*{*/12,\"startFrame\":7//[\n,\"endFrame\":", "12 7 0 0"},
            {"NUL in a string", std::string(R"({"id":"a)") + '\0' + R"(b"})",
             std::string("a\0b 0 0 0", 9)},
            {"999 levels", member + brackets + "1" + std::string(998, ']') + "}", kRead},
            {"1000 levels", member + "[" + brackets + "1" + std::string(999, ']') + "}", kEmpty},
            {"open ones", member + brackets, kRead},
            {"one more", member + brackets + "{", kEmpty},
            {"one more in a string", member + '"' + brackets + "[\"}", kEmpty},
            {"as long as may be", R"({"id":"a"})" + blanks, kRead},
            {"longer", R"({"id":"a"})" + blanks + " ", kEmpty},
    };
    for (const Text& row : rows) {
        EXPECT_EQ(parsed(row.json), row.expected) << row.name;
    }
}

}  // namespace
}  // namespace zk::test
