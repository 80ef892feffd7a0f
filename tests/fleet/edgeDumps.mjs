// Ten records at the edges of what a dump can hold, and the rows that they must become.
import fs from "node:fs";
import path from "node:path";
import {
    binaryOf,
    layout,
    lineOf,
    negativeNan,
    readBinary,
    readLine,
    recordSize,
    unknownFrame,
} from "./recordLayout.mjs";

const largest = {
    u8: 255,
    u16: 65535,
    u32: 4294967295,
    u64: 2n ** 64n - 1n,
    i16: 32767,
    i32: 2147483647,
    f32: Math.fround(3.4028234663852886e38),
};
const smallest = {
    u8: 0,
    u16: 0,
    u32: 0,
    u64: 0n,
    i16: -32768,
    i32: -2147483648,
    f32: -Math.fround(3.4028234663852886e38),
};

const isCount = (name) => /Count$/.test(name);

// Every value by its kind, each array as full as it gets.
function filled(frameNumber, valueOf, elements) {
    const record = {};
    for (const [name, kind] of layout) {
        if (kind.capacity) {
            const count = Math.min(elements, kind.capacity);
            record[`${name}Count`] = count;
            record[name] = Array.from({ length: count }, (_, i) =>
                Object.fromEntries(
                    kind.columns.map(([column, each]) => [column, valueOf(each, i)]),
                ),
            );
        } else if (!isCount(name)) {
            record[name] = valueOf(kind, 0);
        }
    }
    return { ...record, frameNumber };
}

const odd = [NaN, negativeNan, Infinity, -Infinity, -0, 0.1234564, 1e-45];
const names = ['a"b', "a,b", "a\\b", "it's", "1e5", "null", "nan", "[1]", "\xff\n", ""];

const binaryRecords = [
    filled(1, () => undefined, 0),
    filled(2, (kind) => largest[kind] ?? "z".repeat(kind), 60),
    filled(3, (kind) => smallest[kind] ?? "", 2),
    (() => {
        let place = 0;
        return filled(
            4,
            (kind) => (kind === "f32" ? odd[place++ % odd.length] : (smallest[kind] ?? "nan")),
            10,
        );
    })(),
    filled(5, (kind, i) => smallest[kind] ?? names[i % names.length], 10),
    {
        ...filled(6, (kind) => smallest[kind] ?? "x", 60),
        nodeInfoCount: 200,
        pluginAlgoCostTimeCount: 31,
    },
    filled(
        unknownFrame,
        (kind) => (kind === "u64" ? 2n ** 53n + 1n : (smallest[kind] ?? names[2])),
        1,
    ),
    {
        ...filled(
            8,
            (kind, i) => (kind === "u64" ? 2n ** 63n - BigInt(i % 2) : (smallest[kind] ?? "1e5")),
            3,
        ),
        memoryAllocTimeoutInfo_itemName: 'he said "1,5\\" \x01',
    },
];
const textRecords = [
    filled(41, (kind) => (kind === "u64" ? 2n ** 53n - 1n : (largest[kind] ?? '"q"')), 1),
    filled(42, (kind) => largest[kind] ?? "zz", 60),
];

// Writes the dumps below `folder`, and gives the rows by file.
export function makeEdgeDumps(folder) {
    fs.mkdirSync(folder, { recursive: true });
    const rows = [];
    const add = (name, bytes, records) => {
        const file = path.join(folder, name);
        fs.writeFileSync(file, bytes);
        const lostFrame = name.endsWith(".txt") ? 42 : null;
        records.forEach((record, i) =>
            rows.push({ file, lostFrame, session: 1, record: i, ...record }),
        );
    };
    const whole = Buffer.concat(binaryRecords.map(binaryOf));
    const cut = 894 + 44 * 2 + 20; // in the third node
    const last = binaryRecords.length - 1;
    const bytes = whole.subarray(0, last * recordSize + cut);
    add(
        "VIDEO_DEBUG_20261120_080000.bin",
        bytes,
        binaryRecords.map((_, i) =>
            readBinary(bytes.subarray(i * recordSize, (i + 1) * recordSize)),
        ),
    );
    const lines = textRecords.map(lineOf);
    add("VIDEO_DEBUG_20261120_080001_00000042.txt", lines.join(""), lines.map(readLine));
    return rows;
}
