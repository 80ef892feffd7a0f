#include "tools/explain/gatherLosses.h"

#include <algorithm>
#include <cstdio>

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

// Where losses are looked for.
FrameRange lossesIn(const LossRequest& request) {
    return request.frames ? *request.frames : FrameRange{0, UINT32_MAX};
}

// Frames that nobody will ask for are not even looked at.
Selection selectionOf(const LossRequest& request) {
    Selection selection;
    selection.session = request.session;
    if (request.frames) {
        selection.frames =
                request.explains ? SegmentCollector::around(*request.frames) : request.frames;
    } else if (request.lost) {
        selection.frames = SegmentCollector::around(FrameRange{*request.lost, *request.lost});
    }
    return selection;
}

SegmentCollector collectorFor(const LossRequest& request, std::vector<uint32_t> lost) {
    const FrameRange frames = lossesIn(request);
    const bool isOfLosses = !request.frames || request.explains;
    lost.erase(std::remove_if(lost.begin(), lost.end(),
                              [&](uint32_t frame) {
                                  return !isOfLosses || !frames.meets({frame, frame});
                              }),
               lost.end());
    std::vector<FrameRange> wanted = SegmentCollector::around(lost);
    if (request.frames) {
        wanted.push_back(frames);
    }
    return {wanted, isOfLosses && !request.lost ? std::optional(frames) : std::nullopt};
}

}  // namespace

GatheredLosses gatherLosses(const LossRequest& request) {
    const std::vector<Announcement> announcements =
            request.log.empty() ? std::vector<Announcement>() : readAnnouncements(request.log);
    SegmentCollector collector = collectorFor(request, knownLosses(request, announcements));
    Progress progress(request.files, true);
    DumpPass pass(collector, progress, stderr);
    pass.choose(selectionOf(request));
    GatheredLosses gathered;
    for (const std::string& file : request.files) {
        gathered.isWhole &= pass.readFile(file);
    }
    progress.clear();
    gathered.found = makeLossCases(collector.segments(), announcements, request.lost);
    auto& cases = gathered.found.cases;
    cases.erase(std::remove_if(
                        cases.begin(), cases.end(),
                        [&](const LossCase& each) { return !lossesIn(request).meets(each.lost); }),
                cases.end());
    gathered.files = collector.files();
    for (const ReadFile& file : gathered.files) {
        gathered.records += file.records;
    }
    gathered.wasFull = collector.isFull();
    return gathered;
}

}  // namespace vdrdump
