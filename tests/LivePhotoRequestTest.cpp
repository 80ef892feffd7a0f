#include "livephoto/LivePhotoRequest.h"

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/value.h>

#include <string>

namespace zk::test {
namespace {

struct Text {
    const char* name;
    std::string json;
    std::string expected;  // "id start end size"
};

std::string inWords(const LivePhotoRequest& request) {
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

TEST(LivePhotoRequestTest, UntrustedText_ReadsAsFarAsItCan) {
    const std::string empty = " 0 0 0";
    const Text rows[] = {
            {"whole", R"({"id":"a","startFrame":1,"endFrame":4294967295,"bufferSize":4096})",
             "a 1 4294967295 4096"},
            {"with comments", "// x\n{\"id\"/**/:\"a\"}", empty},
            {"with comments where they may be", "/*]*/{//}\n\"id\":/*{*/\"a\"}", "a 0 0 0"},
            {"nothing", "", empty},
            {"null", "null", empty},
            {"an array", R"([{"id":"a"}])", empty},
            {"a string", R"("id")", empty},
            {"a number", "7", empty},
            {"no JSON", "id=a", empty},
            {"id a number", R"({"id":12})", "12 0 0 0"},
            {"id true", R"({"id":true})", "true 0 0 0"},
            {"id null", R"({"id":null})", empty},
            {"id an array", R"({"id":["a"],"startFrame":1})", " 1 0 0"},
            {"id an object", R"({"id":{"id":"a"},"endFrame":1})", " 0 1 0"},
            {"out of range", R"({"startFrame":-1,"endFrame":4294967296,"bufferSize":1e10})", empty},
            {"far out of range",
             R"({"startFrame":-99999999999999999999,"endFrame":99999999999999999999})", empty},
            {"fractions", R"({"startFrame":1.9,"endFrame":-0.5,"bufferSize":4294967295.5})",
             " 1 0 0"},
            {"numbers of other types", R"({"startFrame":"1","endFrame":true,"bufferSize":null})",
             " 0 1 0"},
            {"numbers in containers", R"({"startFrame":[1],"endFrame":{"a":1}})", empty},
            {"twice the same key", R"({"id":"a","id":"b"})", "b 0 0 0"},
            {"something behind", R"({"id":"a"} ]}[[)", "a 0 0 0"},
            {"half", R"({"id":"a","startFrame":7,"endFrame":)", "a 7 0 0"},
            {"broken in the middle", R"({"id":"a",,"startFrame":7})", "a 0 0 0"},
            {"NUL in a string", std::string(R"({"id":"a)") + '\0' + R"(b"})",
             std::string("a\0b 0 0 0", 9)},
            {"NUL between", std::string(R"({"id":"a")") + '\0' + R"(,"startFrame":7})", "a 0 0 0"},
            {"no UTF-8", "{\"id\":\"\xff\xc3\"}", "\xff\xc3 0 0 0"},
    };
    for (const Text& row : rows) {
        EXPECT_EQ(inWords(LivePhotoRequest::parse(row.json)), row.expected) << row.name;
    }
}

// The parser finds values down to the 1000th level and ends the process at the next.
TEST(LivePhotoRequestTest, NestingBeyondTheParser_ReadsAsAnEmptyRequest) {
    const auto arrays = [](int levels, const std::string& inside) {
        return R"({"id":"a","x":)" + times(levels - 1, "[") + inside + times(levels - 1, "]") + "}";
    };
    const auto objects = [](int levels, const std::string& inside) {
        return R"({"id":"a","x":)" + times(levels - 2, R"({"y":)") + "{" + inside +
               times(levels, "}");
    };
    const std::string read = "a 0 0 0";
    const std::string empty = " 0 0 0";
    const std::string manyOpen(100000, '[');
    const Text rows[] = {
            {"998 arrays and a value", arrays(999, "1"), read},
            {"1000 levels, nothing in the last array", arrays(1000, " \n"), read},
            {"1000 levels, a value in the last array", arrays(1000, "1"), empty},
            {"1000 levels, a comment in the last array", arrays(1000, "/**/"), empty},
            {"1001 levels of arrays", arrays(1001, ""), empty},
            {"999 objects and a value", objects(999, R"("z":1)"), read},
            {"1000 levels, nothing in the last object", objects(1000, "/**/"), read},
            {"1000 levels, a value in the last object", objects(1000, R"("z":1)"), empty},
            {"1001 levels of objects", objects(1001, ""), empty},
            {"alternating", times(2000, R"([{"a":)"), empty},
            {"1000 left open", manyOpen.substr(0, 1000), empty},
            {"100000 left open", manyOpen, empty},
            {"many shallow ones", R"({"id":"a","x":[)" + times(5000, "[],{},") + "1]}", read},
            {"brackets in a string", R"({"id":"a","x":"\")" + manyOpen + "\"}", read},
            {"brackets in comments", "/*" + manyOpen + "*/{//" + manyOpen + "\n\"id\":\"a\"}",
             read},
            {"behind the root", R"({"id":"a"})" + manyOpen, read},
            {"behind a bracket that closes nothing", "]" + manyOpen, empty},
            // Behind a comment the parser takes anything for the comma, and what follows a slash
            // with it.
            {"] for a comma", R"({"a":1/**/]"b":)" + manyOpen, empty},
            {"[ for a comma", R"({"x":{"a":1/**/["b":1},"y":)" + manyOpen, empty},
            {"/\" for a comma", R"({"a":1/**/ /""b":)" + manyOpen, empty},
            {"] for every comma", times(2000, R"({"a":1/**/]"b":)"), empty},
    };
    for (const Text& row : rows) {
        EXPECT_EQ(inWords(LivePhotoRequest::parse(row.json)), row.expected) << row.name;
    }
}

TEST(LivePhotoRequestTest, ReplyHoldsWhateverTheIdWas) {
    const std::string ids[] = {"",
                               "plain",
                               "\"}\n\\",
                               "\xC3\xA4\xF0\x9F\x93\xB7",
                               std::string("a\0b", 3),
                               std::string(100000, '[')};
    for (const std::string& id : ids) {
        Json::Value reply;
        ASSERT_TRUE(Json::Reader().parse(livePhotoReply(id, -1), reply)) << id;
        EXPECT_EQ(reply["id"].asString(), id);
        EXPECT_EQ(reply["state"].asInt(), -1);
        EXPECT_EQ(reply.size(), 2U);
    }
}

}  // namespace
}  // namespace zk::test
