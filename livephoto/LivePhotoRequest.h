#pragma once

#include <cstdint>
#include <string>

namespace zk {

// What the application asks for, in its own frame numbering. The text is not trusted: whatever it
// holds, missing or unusable numbers read as 0 and a missing or unusable id as the empty string. A
// text of more than 16 KiB, or with more than 999 opening brackets and braces, has no members.
struct LivePhotoRequest {
    std::string id;
    uint32_t startFrame = 0;
    uint32_t endFrame = 0;
    uint32_t bufferSize = 0;  // bytes behind the descriptor that comes with the request

    // Any thread.
    static LivePhotoRequest parse(const std::string& json);
};

// The reply to the request of that id, as styled JSON; `state` 1: the records are in the buffer.
std::string livePhotoReply(const std::string& id, int32_t state);

}  // namespace zk
