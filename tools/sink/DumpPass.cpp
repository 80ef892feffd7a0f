#include "tools/sink/DumpPass.h"

#include <cstring>

#include "tools/read/FileSource.h"
#include "tools/read/lostFrameOf.h"
#include "tools/read/makeReader.h"

namespace vdrdump {
namespace {

void reportUnreadable(DamageLog& damage, uint64_t offset, int error) {
    if (damage.add(Damage::Unreadable)) {
        damage.describe(offset, std::string("a dump that can be read: ") + std::strerror(error));
    }
}

}  // namespace

bool DumpPass::readFile(const std::string& path) {
    FileSource source(path, [this](uint64_t bytes) { mProgress.advance(bytes); });
    if (source.openError() != 0) {
        DamageLog damage(path, mErrors, &mProgress);
        reportUnreadable(damage, 0, source.openError());
        return false;
    }
    return readSource(path, source);
}

bool DumpPass::readSource(const std::string& path, ByteSource& source) {
    DamageLog damage(path, mErrors, &mProgress);
    ByteWindow window(source);
    DumpFile file;
    file.path = path;
    file.number = ++mFiles;
    const std::unique_ptr<DumpReader> reader = makeReader(window, damage, file.kind);
    if (file.kind == DumpKind::Text) {
        file.lostFrame = lostFrameOf(path);
    }
    mSink.beginFile(file);
    const uint64_t records = reader != nullptr ? readRecords(*reader) : 0;
    if (window.error() != 0) {
        reportUnreadable(damage, window.offset(), window.error());
    }
    mSink.endFile(records, damage);
    mProgress.clear();
    damage.finish();
    return !damage.any();
}

uint64_t DumpPass::readRecords(DumpReader& reader) {
    SessionTracker sessions;
    uint64_t records = 0;
    Record record;
    while (!mSink.isDone() && reader.next(record)) {
        const auto frame = record.read<uint32_t>(offsetof(Layout, frameNumber));
        if (sessions.startsOver(frame)) {
            mSink.endSession(sessions.session());
            sessions.restart();
        }
        sessions.add(frame);
        record.session = sessions.session().number;
        mSink.add(record);
        ++records;
    }
    if (records != 0) {
        mSink.endSession(sessions.session());
    }
    return records;
}

}  // namespace vdrdump
