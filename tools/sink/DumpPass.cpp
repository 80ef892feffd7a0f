#include "tools/sink/DumpPass.h"

#include <cstring>

#include "tools/output/printablePath.h"
#include "tools/read/DumpName.h"
#include "tools/read/FileSource.h"
#include "tools/read/makeReader.h"

namespace vdrdump {
namespace {

void reportUnreadable(DamageLog& damage, uint64_t offset, int error) {
    if (damage.add(Damage::Unreadable)) {
        damage.describe(offset, std::string("a dump that can be read: ") + std::strerror(error));
    }
}

// The recorder makes a frame-loss text when it has lines for it.
void reportNoLines(DamageLog& damage, uint32_t lostFrame) {
    if (damage.add(Damage::NoLines)) {
        damage.describe(0, "lines of the frames around frame " + std::to_string(lostFrame) +
                                   ", found an empty file");
    }
}

void reportMisnumbered(DamageLog& damage, const Record& record, const SessionSummary& session) {
    if (!damage.add(Damage::Misnumbered)) {
        return;
    }
    const std::string near =
            session.numbered == 0 ? "those behind it" : std::to_string(session.last);
    damage.describe(record.offset,
                    "a frame number near " + near + ", found " + std::to_string(record.frame()));
}

}  // namespace

bool DumpPass::readFile(const std::string& path) {
    FileSource source(path, [this](uint64_t bytes) { mProgress.advance(bytes); });
    return readSource(path, source);
}

bool DumpPass::readSource(const std::string& path, ByteSource& source) {
    DumpFile file;
    file.path = printablePath(path);
    file.number = ++mFiles;
    DamageLog damage(file.path, mErrors, &mProgress);
    ByteWindow window(source);
    const std::unique_ptr<DumpReader> reader = makeReader(window, damage, file.kind);
    if (file.kind == DumpKind::Empty && window.error() != 0) {
        file.kind = DumpKind::None;
    }
    if (file.kind != DumpKind::None) {
        const DumpName name = DumpName::of(path);
        file.time = name.time;
        file.lostFrame = mSelection.lost ? mSelection.lost : name.lostFrame;
        if (file.kind == DumpKind::Empty && name.lostFrame) {
            reportNoLines(damage, *name.lostFrame);
        }
    }
    LossFinder losses(file.lostFrame);
    mSink.beginFile(file);
    const uint64_t records = reader != nullptr ? readRecords(*reader, losses, damage) : 0;
    if (window.error() != 0) {
        reportUnreadable(damage, window.offset(), window.error());
    }
    mSink.endFile({records, damage, losses});
    mProgress.clear();
    damage.finish();
    return !damage.any();
}

void DumpPass::endSession(const SessionTracker& sessions, LossFinder& losses) {
    losses.endSession(sessions.session());
    if (mSelection.wantsSession(sessions.session().number)) {
        mSink.endSession(sessions.session());
    }
}

uint64_t DumpPass::readRecords(DumpReader& reader, LossFinder& losses, DamageLog& damage) {
    using Step = SessionTracker::Step;
    SessionTracker sessions;
    uint64_t records = 0;
    Record record;
    while (!mSink.isDone() && reader.next(record)) {
        const uint32_t frame = record.frame();
        Step step = Step::Belongs;
        if (!sessions.isPlain(frame)) {
            const NumbersAhead ahead = reader.ahead();
            step = sessions.judge(frame, ahead.begin(), ahead.count);
        }
        if (step == Step::StartsOver) {
            endSession(sessions, losses);
            sessions.restart();
        }
        record.isMisnumbered = step == Step::Misnumbered;
        if (record.isMisnumbered) {
            reportMisnumbered(damage, record, sessions.session());
            sessions.addMisnumbered();
        } else {
            sessions.add(frame);
        }
        record.session = sessions.session().number;
        losses.add(record);
        if (mSelection.wants(record)) {
            mSink.add(record);
        }
        ++records;
    }
    if (records != 0) {
        endSession(sessions, losses);
    }
    return records;
}

}  // namespace vdrdump
