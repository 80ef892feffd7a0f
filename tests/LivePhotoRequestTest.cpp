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

std::string times(int count, const std::string& part) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += part;
    }
    return all;
}

// As many levels of arrays or objects, the request's own among them, in the value of a member.
std::string arrays(int levels, const std::string& inside) {
    return R"({"id":"a","x":)" + times(levels - 1, "[") + inside + times(levels - 1, "]") + "}";
}
std::string objects(int levels, const std::string& inside) {
    return R"({"id":"a","x":)" + times(levels - 2, R"({"y":)") + "{" + inside + times(levels, "}");
}

const std::string kRead = "a 0 0 0";
const std::string kEmpty = " 0 0 0";

TEST(LivePhotoRequestTest, UntrustedText_ReadsAsFarAsItCan) {
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
    };
    for (const Text& row : rows) {
        EXPECT_EQ(parsed(row.json), row.expected) << row.name;
    }
}

// The parser finds values down to the 1000th level and ends the process at the next.
TEST(LivePhotoRequestTest, NestingBeyondTheParser_ReadsAsAnEmptyRequest) {
    const std::string manyOpen(100000, '[');
    const Text rows[] = {
            {"1000 levels, nothing in the last array", arrays(1000, " \n"), kRead},
            {"1000 levels, a value in the last array", arrays(1000, "1"), kEmpty},
            {"1000 levels, nothing in the last object", objects(1000, "/**/"), kRead},
            {"1000 levels, a value in the last object", objects(1000, R"("z":1)"), kEmpty},
            {"brackets in a string", R"({"id":"a","x":"\")" + manyOpen + "\"}", kRead},
            {"brackets in comments", "/*" + manyOpen + "*/{//" + manyOpen + "\n\"id\":\"a\"}",
             kRead},
            {"behind a bracket that closes nothing", "]" + manyOpen, kEmpty},
            // Behind a comment the parser takes anything for the comma, and what follows a slash
            // with it.
            {"[ for a comma", R"({"x":{"a":1/**/["b":1},"y":)" + manyOpen, kEmpty},
            {"/\" for a comma", R"({"a":1/**/ /""b":)" + manyOpen, kEmpty},
            {"] for every comma", times(2000, R"({"a":1/**/]"b":)"), kEmpty},
    };
    for (const Text& row : rows) {
        EXPECT_EQ(parsed(row.json), row.expected) << row.name;
    }
}

}  // namespace
}  // namespace zk::test
