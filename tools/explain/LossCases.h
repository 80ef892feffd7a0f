#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/explain/Segment.h"
#include "tools/explain/readAnnouncements.h"

namespace vdrdump {

// How it is known that a frame was lost.
struct LossEvidence {
    enum class From : uint8_t { FileName, Log, User, Gap };
    From from = From::Gap;
    std::string path;  // of the dump, empty for a log and the user
    std::string time;  // of the announcement, empty where it is not known
};

// Files of one camera session and the frames that they hold together, each once.
struct SessionHistory {
    std::vector<std::string> paths;
    std::vector<std::string> damaged;  // of these
    uint32_t session = 0;              // in its file; 0 where several files differ
    FrameMap frames;
};

struct LossCase {
    FrameRange lost{};
    std::vector<LossEvidence> evidence;
    std::shared_ptr<const SessionHistory> history;  // without frames where no dump has any near it
};

// What is to be explained.
struct LossCases {
    std::vector<LossCase> cases;
    std::vector<std::shared_ptr<const SessionHistory>> histories;  // with losses or without
    uint64_t unlisted = 0;  // frames without a record in gaps beyond those listed
};

// Puts together what segments tell of one session, and finds its losses: those that names of files
// and the log announce and gaps of binary dumps or, where the user names a frame, that one only.
LossCases makeLossCases(const std::vector<Segment>& segments,
                        const std::vector<Announcement>& announcements,
                        std::optional<uint32_t> lost);

// Whether both are of one camera session: the same frames are the same in both or, where they have
// none in common, their stamps go on from one to the other.
bool areOneSession(const FrameMap& a, const FrameMap& b);

}  // namespace vdrdump
