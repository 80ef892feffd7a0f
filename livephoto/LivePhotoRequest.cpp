#include "livephoto/LivePhotoRequest.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <cstddef>

namespace zk {
namespace {

constexpr size_t kLongestText = 16384;  // bytes: the parser's time grows with the text's square

// A value below the parser's thousandth level ends the process. No level opens without one of
// these; those in strings count as well, since what the parser takes for a string in malformed
// text is its own affair.
constexpr ptrdiff_t kMostOpeningBrackets = 999;

bool isParsable(const std::string& json) {
    return json.size() <= kLongestText && std::count_if(json.begin(), json.end(), [](char c) {
                                              return c == '[' || c == '{';
                                          }) <= kMostOpeningBrackets;
}

uint32_t unsignedMember(const Json::Value& root, const char* key) {
    const Json::Value& value = root[key];
    return value.isConvertibleTo(Json::uintValue) ? value.asUInt() : 0;
}

}  // namespace

LivePhotoRequest LivePhotoRequest::parse(const std::string& json) {
    LivePhotoRequest request;
    Json::Value root;
    if (isParsable(json)) {
        Json::Reader().parse(json, root);
    }
    if (!root.isObject()) {
        return request;
    }
    if (const Json::Value& id = root["id"]; id.isConvertibleTo(Json::stringValue)) {
        request.id = id.asString();
    }
    request.startFrame = unsignedMember(root, "startFrame");
    request.endFrame = unsignedMember(root, "endFrame");
    request.bufferSize = unsignedMember(root, "bufferSize");
    return request;
}

std::string livePhotoReply(const std::string& id, int32_t state) {
    Json::Value reply;
    reply["state"] = Json::Value(state);
    reply["id"] = Json::Value(id);
    return reply.toStyledString();
}

}  // namespace zk
