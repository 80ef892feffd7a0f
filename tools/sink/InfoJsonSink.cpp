#include "tools/sink/InfoJsonSink.h"

#include <type_traits>

namespace vdrdump {
namespace {

Json::Value numberOf(uint64_t number) {
    return Json::UInt64{number};
}

Json::Value orNull(const std::string& text) {
    return text.empty() ? Json::Value() : Json::Value(text);
}

Json::Value rangeOf(const FrameRange& range) {
    Json::Value value(Json::arrayValue);
    value.append(range.first);
    value.append(range.last);
    return value;
}

template <typename T>
Json::Value rangeOf(const Range<T>& range) {
    if (range.isEmpty()) {
        return {};
    }
    Json::Value value(Json::arrayValue);
    for (const T each : {range.low(), range.high()}) {
        if constexpr (std::is_floating_point_v<T>) {
            value.append(static_cast<double>(each));
        } else {
            value.append(Json::Int64{each});
        }
    }
    return value;
}

Json::Value clockOf(const FrameClock& clock) {
    const auto ticks = clock.ticksPerSecond();
    if (!ticks) {
        return {};
    }
    Json::Value value;
    value["seconds"] = clock.seconds();
    value["framesPerSecond"] = clock.framesPerSecond();
    value["ticksPerSecond"] = *ticks;
    return value;
}

Json::Value videosOf(const VideoWindows& videos) {
    Json::Value value(Json::arrayValue);
    for (const VideoWindow& window : videos.windows()) {
        Json::Value each;
        each["first"] = window.startSeen ? Json::Value(window.first) : Json::Value();
        each["last"] = window.endSeen ? Json::Value(window.last) : Json::Value();
        value.append(each);
    }
    return value;
}

Json::Value lossOf(const Loss& loss) {
    Json::Value value;
    value["frame"] = loss.frame;
    value["source"] = loss.source == Loss::Source::Gap ? "gap" : "announced";
    value["session"] = loss.session == 0 ? Json::Value() : Json::Value(loss.session);
    value["hasRecord"] = !loss.missing;
    value["missing"] = loss.missing ? rangeOf(*loss.missing) : Json::Value();
    return value;
}

Json::Value damageOf(const DamageLog& damage) {
    static constexpr struct {
        Damage damage;
        const char* name;
    } kNames[] = {{Damage::Unreadable, "unreadable"},  {Damage::NoDump, "noDump"},
                  {Damage::NoLines, "noLines"},        {Damage::ZeroRecord, "zeroRecords"},
                  {Damage::CutRecord, "cutRecords"},   {Damage::PassedBytes, "passedPlaces"},
                  {Damage::Misnumbered, "badNumbers"}, {Damage::CountTooLarge, "badCounts"},
                  {Damage::CutLine, "cutLines"},       {Damage::BadLine, "badLines"}};
    static_assert(std::size(kNames) == static_cast<size_t>(Damage::Count));
    Json::Value value(Json::objectValue);
    for (const auto& each : kNames) {
        if (damage.count(each.damage) != 0) {
            value[each.name] = numberOf(damage.count(each.damage));
        }
    }
    if (damage.passed() != 0) {
        value["passedBytes"] = numberOf(damage.passed());
    }
    return value;
}

}  // namespace

InfoJsonSink::InfoJsonSink() : mOutput("-") {
    mBuilder["indentation"] = "";
    mOutput.append("{\"files\":[");
}

std::string InfoJsonSink::textOf(const Json::Value& value) const {
    return Json::writeString(mBuilder, value);
}

void InfoJsonSink::beginFile(const DumpFile& file) {
    mFile = file;
    mSessions = Json::Value(Json::arrayValue);
}

void InfoJsonSink::endSession(const SessionSummary& session) {
    Json::Value value;
    value["session"] = session.number;
    value["records"] = numberOf(session.records);
    const bool hasFrames = session.numbered != 0;
    value["frames"] = hasFrames ? rangeOf({session.first, session.last}) : Json::Value();
    value["missing"] = numberOf(session.missing);
    value["gaps"] = Json::Value(Json::arrayValue);
    for (const FrameRange& gap : session.gaps) {
        value["gaps"].append(rangeOf(gap));
    }
    value["repeated"] = numberOf(session.repeated);
    value["late"] = numberOf(session.late);
    value["withoutNumber"] = numberOf(session.records - session.numbered);
    value["clock"] = clockOf(mStatistics.clock);
    value["recordings"] = videosOf(mStatistics.videos);
    value["zoomRatio"] = rangeOf(mStatistics.zoom);
    value["cpuUsage"] = rangeOf(mStatistics.usage);
    value["loadAvg1"] = rangeOf(mStatistics.load);
    value["shellFrontTemp"] = rangeOf(mStatistics.frontTemp);
    value["shellBackTemp"] = rangeOf(mStatistics.backTemp);
    value["shellFrameTemp"] = rangeOf(mStatistics.frameTemp);
    value["memFree"] = rangeOf(mStatistics.memFree);
    value["memAvailable"] = rangeOf(mStatistics.memAvailable);
    value["usedMem"] = rangeOf(mStatistics.usedMem);
    mSessions.append(value);
    mStatistics = SessionStatistics();
}

void InfoJsonSink::endFile(const DumpEnd& end) {
    Json::Value value;
    value["path"] = mFile.path;
    value["kind"] = nameOf(mFile.kind);
    value["time"] = orNull(mFile.time);
    value["records"] = numberOf(end.records);
    value["sessions"] = mSessions;
    value["losses"] = Json::Value(Json::arrayValue);
    for (const Loss& loss : end.losses.losses()) {
        value["losses"].append(lossOf(loss));
    }
    value["lossCount"] = numberOf(end.losses.count());
    value["damage"] = damageOf(end.damage);
    mOutput.append((mTotals.files == 0 ? "\n" : ",\n") + textOf(value));
    mTotals.add(mFile, end, mSessions.size());
}

bool InfoJsonSink::finish() {
    Json::Value total;
    total["files"] = numberOf(mTotals.files);
    total["damaged"] = numberOf(mTotals.damaged);
    total["records"] = numberOf(mTotals.records);
    total["sessions"] = numberOf(mTotals.sessions);
    total["losses"] = numberOf(mTotals.losses);
    mOutput.append("],\n\"total\":" + textOf(total) + "}\n");
    return mOutput.finish();
}

}  // namespace vdrdump
