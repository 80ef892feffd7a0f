#include "tools/explain/gatherLosses.h"

#include <algorithm>
#include <cstdio>

#include "tools/explain/SegmentCollector.h"
#include "tools/read/DumpName.h"
#include "tools/sink/DumpPass.h"

namespace vdrdump {
namespace {

// Before anything is read; those that dumps are named after come first.
std::vector<uint32_t> knownLosses(const LossRequest& request,
                                  const std::vector<Announcement>& announcements) {
    if (request.lost) {
        return {*request.lost};
    }
    std::vector<uint32_t> lost;
    const auto add = [&lost](uint32_t frame) {
        if (std::find(lost.begin(), lost.end(), frame) == lost.end()) {
            lost.push_back(frame);
        }
    };
    for (const std::string& file : request.files) {
        if (const auto announced = DumpName::of(file).lostFrame) {
            add(*announced);
        }
    }
    for (const Announcement& each : announcements) {
        add(each.frame);
    }
    return lost;
}

// Frames that nobody will ask for are not even looked at.
Selection selectionOf(const LossRequest& request) {
    Selection selection;
    selection.session = request.session;
    selection.frames = request.frames;
    if (request.lost && !request.frames) {
        selection.frames = SegmentCollector::around(FrameRange{*request.lost, *request.lost});
    }
    return selection;
}

}  // namespace

GatheredLosses gatherLosses(const LossRequest& request) {
    const std::vector<Announcement> announcements =
            request.log.empty() ? std::vector<Announcement>() : readAnnouncements(request.log);
    const std::vector<FrameRange> wanted =
            request.frames ? std::vector<FrameRange>{*request.frames}
                           : SegmentCollector::around(knownLosses(request, announcements));
    SegmentCollector collector(wanted, !request.lost && !request.frames);
    Progress progress(request.files, true);
    DumpPass pass(collector, progress, stderr);
    pass.choose(selectionOf(request));
    GatheredLosses gathered;
    for (const std::string& file : request.files) {
        gathered.isWhole &= pass.readFile(file);
    }
    progress.clear();
    gathered.found = makeLossCases(collector.segments(), announcements, request.lost);
    gathered.records = collector.records();
    gathered.wasFull = collector.isFull();
    return gathered;
}

}  // namespace vdrdump
