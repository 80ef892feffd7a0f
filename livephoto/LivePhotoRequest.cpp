#include "livephoto/LivePhotoRequest.h"

#include <json/reader.h>
#include <json/value.h>

#include <algorithm>
#include <vector>

namespace zk {
namespace {

constexpr size_t kDeepestNesting = 1000;  // a value further down ends the process

// Bytes. Collecting a comment searches all text since the last value: thousands of them would keep
// the parser busy for seconds. What is read is the same either way.
constexpr size_t kLongestTextWithComments = 16384;

// Skips the rest of a string or comment that starts at `at`; the position behind it.
size_t skipString(const std::string& json, size_t at) {
    for (++at; at < json.size() && json[at] != '"'; ++at) {
        if (json[at] == '\\') {
            ++at;
        }
    }
    return at + 1;
}

size_t skipComment(const std::string& json, size_t at) {
    const char kind = at + 1 < json.size() ? json[at + 1] : '\0';
    if (kind == '*') {
        const size_t end = json.find("*/", at + 2);
        return end == std::string::npos ? json.size() : end + 2;
    }
    // The parser swallows the character behind a stray slash, be it a quote or a bracket.
    return kind == '/' ? json.find_first_of("\r\n", at) : at + 2;
}

// Whether the parser would look for a value deeper than it can. Brackets that close nothing are
// skipped, since the parser takes whatever follows a comment behind a member for the comma: the
// brackets that it has open are always among those counted here, so that malformed text may be
// called too deep, and none that is goes unnoticed.
bool isTooDeep(const std::string& json) {
    std::vector<char> open;
    for (size_t at = 0; at < json.size();) {
        const char c = json[at];
        if (c == '"') {
            at = skipString(json, at);
            continue;
        }
        if (c == '/') {
            at = skipComment(json, at);
            continue;
        }
        ++at;
        bool isValueNext = c == ':';
        if (c == '{' || c == '[') {
            open.push_back(c);
            const size_t next = json.find_first_not_of(" \t\r\n", at);
            isValueNext = c == '[' && (next == std::string::npos || json[next] != ']');
        } else if ((c == '}' || c == ']') && !open.empty() &&
                   open.back() == (c == '}' ? '{' : '[')) {
            open.pop_back();
            if (open.empty()) {
                return false;  // what follows the root is not read
            }
        }
        if (open.size() + (isValueNext ? 1 : 0) > kDeepestNesting) {
            return true;
        }
    }
    return false;
}

uint32_t unsignedMember(const Json::Value& root, const char* key) {
    const Json::Value& value = root[key];
    return value.isConvertibleTo(Json::uintValue) ? value.asUInt() : 0;
}

}  // namespace

LivePhotoRequest LivePhotoRequest::parse(const std::string& json) {
    LivePhotoRequest request;
    if (isTooDeep(json)) {
        return request;
    }
    Json::Value root;
    const bool collectComments = json.size() <= kLongestTextWithComments;
    Json::Reader().parse(json, root, collectComments);
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
