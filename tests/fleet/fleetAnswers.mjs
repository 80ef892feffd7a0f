// What the page's questions must be answered with, worked out from the records themselves.
import { unknownFrame } from "./recordLayout.mjs";

const isNumbered = (record) => record.frameNumber !== null && record.frameNumber !== unknownFrame;
const sum = (numbers) => numbers.reduce((all, each) => all + each, 0);
export const mean = (numbers) => sum(numbers) / numbers.length;

function median(numbers) {
    const sorted = [...numbers].sort((a, b) => a - b);
    const middle = sorted.length / 2;
    return sorted.length % 2
        ? sorted[Math.floor(middle)]
        : (sorted[middle - 1] + sorted[middle]) / 2;
}

export function groupBy(list, keyOf) {
    const groups = new Map();
    for (const each of list) {
        const key = keyOf(each);
        if (!groups.has(key)) {
            groups.set(key, []);
        }
        groups.get(key).push(each);
    }
    return groups;
}

// As vdrdump shows a node: "0x2:0xca:0x0".
const nodeOf = (node) =>
    [node.ids_0, node.ids_1, node.ids_2].map((id) => `0x${Number(id).toString(16)}`).join(":");
const isStuck = (node) => node.stamps_0 !== 0n && node.stamps_3 === 0n;
const wholeOf = (node) =>
    node.stamps_0 !== 0n && node.stamps_3 !== 0n ? Number(node.stamps_3 - node.stamps_0) : null;

const sessionsOf = (dumps) =>
    dumps.flatMap((dump) =>
        dump.sessions.map((records, i) => ({ ...dump, session: i + 1, records })),
    );

export function gapsOf(dumps) {
    const gaps = [];
    for (const { day, device, build, file, session, records } of sessionsOf(dumps)) {
        const there = new Set(records.filter(isNumbered).map((record) => record.frameNumber));
        let firstFrame = null;
        for (let frame = Math.min(...there); frame <= Math.max(...there); ++frame) {
            if (!there.has(frame)) {
                firstFrame ??= frame;
            } else if (firstFrame !== null) {
                gaps.push({
                    day,
                    device,
                    build,
                    file,
                    session,
                    records,
                    firstFrame,
                    lastFrame: frame - 1,
                    frames: frame - firstFrame,
                });
                firstFrame = null;
            }
        }
    }
    return gaps;
}

// Announced ones, and gaps in which none of that device and day was announced.
export function lossesOf(dumps) {
    const announced = sessionsOf(dumps).filter((each) => each.lostFrame !== null);
    const gaps = gapsOf(dumps)
        .filter(
            (gap) =>
                !announced.some(
                    (loss) =>
                        loss.day === gap.day &&
                        loss.device === gap.device &&
                        loss.lostFrame >= gap.firstFrame &&
                        loss.lostFrame <= gap.lastFrame,
                ),
        )
        .map((gap) => ({ ...gap, lostFrame: gap.firstFrame }));
    return [...announced, ...gaps].map((loss) => {
        const before = loss.records.filter(
            (record) => isNumbered(record) && record.frameNumber <= loss.lostFrame,
        );
        const frame = Math.max(...before.map((record) => record.frameNumber));
        return { ...loss, record: before.find((record) => record.frameNumber === frame) };
    });
}

// The node in which the frame got stuck; where it did not, the one that took longest beyond what it
// takes in the ten frames on either side.
export function nodeOfLoss(loss) {
    const frame = loss.record.frameNumber;
    const others = loss.records.filter(
        (record) =>
            isNumbered(record) &&
            record.frameNumber !== frame &&
            Math.abs(record.frameNumber - frame) <= 10,
    );
    const timesOf = (name) =>
        others
            .flatMap((record) =>
                record.nodeInfo.filter((node) => nodeOf(node) === name).map(wholeOf),
            )
            .filter((time) => time !== null);
    const ranked = loss.record.nodeInfo
        .map((node) => ({
            node: nodeOf(node),
            isStuck: isStuck(node),
            excess:
                wholeOf(node) === null ? -Infinity : wholeOf(node) - median(timesOf(nodeOf(node))),
        }))
        .sort((a, b) => b.isStuck - a.isStuck || b.excess - a.excess);
    return ranked[0];
}

export function answerNodes(losses) {
    const known = losses.map((loss) => ({ ...loss, ...nodeOfLoss(loss) }));
    return [...groupBy(known, (loss) => `${loss.build} ${loss.node}`).values()].map((group) => ({
        build: group[0].build,
        node: group[0].node,
        losses: group.length,
        stuck: group.filter((loss) => loss.isStuck).length,
        front: median(group.map((loss) => loss.record.sysStatusInfo_shellFrontTemp)),
        thermalLevel: Math.max(...group.map((loss) => loss.record.sysStatusInfo_thermalLevel)),
    }));
}

export function answerGaps(gaps) {
    return [...groupBy(gaps, (gap) => `${gap.day} ${gap.device}`).values()].map((group) => ({
        day: group[0].day,
        device: group[0].device,
        gaps: group.length,
        frames: sum(group.map((gap) => gap.frames)),
    }));
}

const recorded = (dumps) =>
    dumps
        .filter((dump) => dump.lostFrame === null)
        .flatMap(({ build, sessions }) => sessions.flat().map((record) => ({ build, ...record })));

export function answerRates(dumps, losses) {
    const rows = groupBy(
        recorded(dumps),
        (record) => `${record.build} ${record.sysStatusInfo_thermalLevel}`,
    );
    const lost = groupBy(
        losses,
        (loss) => `${loss.build} ${loss.record.sysStatusInfo_thermalLevel}`,
    );
    return [...rows].map(([key, group]) => ({
        build: group[0].build,
        thermalLevel: group[0].sysStatusInfo_thermalLevel,
        frames: group.length,
        losses: lost.get(key)?.length ?? 0,
        perThousand: (1000 * (lost.get(key)?.length ?? 0)) / group.length,
    }));
}

export function answerCosts(dumps) {
    const runs = recorded(dumps).flatMap((record) =>
        [...record.pluginAlgoCostTime, ...record.semantAlgoCostTime].map((algorithm) => ({
            build: record.build,
            ...algorithm,
        })),
    );
    return [...groupBy(runs, (each) => `${each.build} ${each.name}`).values()].map((group) => ({
        build: group[0].build,
        name: group[0].name,
        runs: group.length,
        meanCost: mean(group.map((each) => each.cost)),
        highestCost: Math.max(...group.map((each) => each.cost)),
    }));
}
