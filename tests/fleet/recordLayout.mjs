// A frame record as docs/formats.md describes it, written down a second time and read without
// vdrdump, so that a column that moves, or is called or typed otherwise, does not agree with it.

export const negativeNan = "-nan";

const kinds = {
    u8: [1, (view, at) => view.getUint8(at), (view, at, value) => view.setUint8(at, value)],
    u16: [2, (view, at) => view.getUint16(at, true), (view, at, value) => view.setUint16(at, value, true)],
    u32: [4, (view, at) => view.getUint32(at, true), (view, at, value) => view.setUint32(at, value, true)],
    u64: [8, (view, at) => view.getBigUint64(at, true), (view, at, value) => view.setBigUint64(at, value, true)],
    i16: [2, (view, at) => view.getInt16(at, true), (view, at, value) => view.setInt16(at, value, true)],
    i32: [4, (view, at) => view.getInt32(at, true), (view, at, value) => view.setInt32(at, value, true)],
    f32: [4, (view, at) => view.getFloat32(at, true), (view, at, value) => (value === negativeNan
        ? view.setUint32(at, 0xffc00000, true) : view.setFloat32(at, value, true))],
};

const stamps = (names) => names.map((name) => [name, "u64"]);
const numbered = (name, count, kind) => Array.from({ length: count }, (_, i) => [`${name}_${i}`, kind]);
const group = (name, columns) => columns.map(([column, kind]) => [`${name}_${column}`, kind]);
const array = (name, capacity, columns) => [[`${name}Count`, "u8"], [name, { capacity, columns }]];

const feature = [["id", "u32"], ["state", "u8"], ["stamp", "u64"]];
const algorithm = [["name", 6], ["cost", "u8"]];

// Name and kind in the order of the layout; a number is the width of a text, an object an array.
export const layout = [
    ["frameNumber", "u32"],
    ...group("cslInfo", [["value", "u32"], ["stamp", "u64"]]),
    ["masterCameraId", "u8"], ["manualCaptureTag", "u8"], ["sensorModeIndex", "u8"], ["zoomRatio", "f32"],
    ...group("sysStatusInfo", [
        ["cpu0Freq", "i32"], ["cpu4Freq", "i32"], ["cpu7Freq", "i32"], ["cpuUsage", "u16"],
        ["loadAvg1", "f32"], ["loadAvg5", "f32"], ["loadAvg15", "f32"],
        ["shellFrontTemp", "i32"], ["shellBackTemp", "i32"], ["shellFrameTemp", "i32"],
        ["memFree", "u32"], ["memAvailable", "u32"], ["usedMem", "u32"],
        ["sceneMode", "u16"], ["thermalLevel", "u8"], ["thermalEscapeState", "u8"],
    ]),
    ["captureType", "u8"], ["videoAction", "u8"],
    ...array("featureRequestStateInfo", 15, feature),
    ...array("featureMessageTypeInfo", 15, feature),
    ...array("pluginAlgoCostTime", 30, algorithm),
    ...array("semantAlgoCostTime", 30, algorithm),
    ...array("nodeInfo", 60, [...numbered("ids", 3, "u32"), ...numbered("stamps", 4, "u64")]),
    ...stamps(["Gme", "EisV2", "EisV3"].flatMap((each) => [
        `set${each}NcsDep`,
        ...["Gyro", "Ois", "Accel", "Mag"].map((sensor) => `get${each}NcsDep${sensor}`)])),
    ...group("ae_af_awb_info", [
        ...numbered("words", 2, "u32"), ...numbered("ratios", 6, "f32"), ["word2", "u32"], ["short0", "i16"],
        ...numbered("words3", 5, "u32"), ["short1", "i16"],
    ]),
    ...group("awbInfo_qawb_cap", [...numbered("gains", 9, "f32"), ["word", "u32"]]),
    ...array("awbInfo_qawb_cap_sa", 10, [["name", 15], ["value", "f32"]]),
    ...group("memoryAllocTimeoutInfo", [
        ["itemName", 40], ["allocSizeKB", "u32"], ["allocTimeSec", "u16"], ["itemType", "u8"]]),
];

export const recordSize = 4096;
export const unknownFrame = 4294967295;

const sizeOf = (kind) => (typeof kind === "number" ? kind : kinds[kind][0]);
const countOf = (name) => `${name}Count`;

// What a float is once it was printed with six decimals.
function printed(value) {
    return Math.abs(value) < 1e21 ? Math.fround(Number(value.toFixed(6))) : value;
}

function textOf(bytes) {
    const end = bytes.indexOf(0);
    return [...(end < 0 ? bytes : bytes.subarray(0, end))]
        .map((byte) => (byte >= 0x20 && byte <= 0x7e && byte !== 0x5c
            ? String.fromCharCode(byte)
            : `\\x${byte.toString(16).padStart(2, "0")}`))
        .join("");
}

// The values of the bytes that are there; null for what is not.
export function readBinary(bytes) {
    const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.length);
    let at = 0;
    const next = (kind) => {
        const from = at;
        at += sizeOf(kind);
        if (at > bytes.length) {
            return null;
        }
        if (typeof kind === "number") {
            return textOf(bytes.subarray(from, at));
        }
        const value = kinds[kind][1](view, from);
        return kind === "f32" ? printed(value) : value;
    };
    const record = {};
    for (const [name, kind] of layout) {
        if (!kind.capacity) {
            record[name] = next(kind);
            continue;
        }
        const count = record[countOf(name)];
        const end = at + kind.capacity * kind.columns.reduce((all, [, each]) => all + sizeOf(each), 0);
        const elements = [];
        for (let i = 0; i < Math.min(count, kind.capacity); ++i) {
            const element = Object.fromEntries(kind.columns.map(([column, each]) => [column, next(each)]));
            if (at <= bytes.length) {
                elements.push(element);
            }
        }
        record[name] = count === null ? null : elements;
        at = end;
    }
    return record;
}

// A line of text, or as much of one as the recorder wrote.
export function readLine(line) {
    const cells = line.split(",");
    cells.pop();  // behind the last comma is nothing, or a value that was cut
    const next = (kind) => {
        const cell = cells.shift();
        if (cell === undefined || typeof kind === "number") {
            return cell ?? null;
        }
        if (kind === "u64") {
            return BigInt(cell);
        }
        const value = Number(cell.replace("inf", "Infinity").replace("-nan", "nan"));
        return kind === "f32" ? Math.fround(value) : kind === "i32" ? value | 0 : value;
    };
    const record = {};
    for (const [name, kind] of layout) {
        if (!kind.capacity) {
            record[name] = next(kind);
            continue;
        }
        const count = record[countOf(name)];
        record[name] = count === null ? null : [];
        for (let i = 0; i < count; ++i) {
            const element = Object.fromEntries(kind.columns.map(([column, each]) => [column, next(each)]));
            if (Object.values(element).every((value) => value !== null)) {
                record[name].push(element);
            }
        }
    }
    return record;
}

// The bytes of a record with these values, 0 where there is none; texts are given as bytes.
export function binaryOf(values) {
    const bytes = new Uint8Array(recordSize);
    const view = new DataView(bytes.buffer);
    let at = 0;
    const put = (kind, value) => {
        if (typeof kind === "number") {
            bytes.set(Buffer.from(value ?? "", "latin1").subarray(0, kind), at);
        } else if (value !== undefined) {
            kinds[kind][2](view, at, value);
        }
        at += sizeOf(kind);
    };
    for (const [name, kind] of layout) {
        if (!kind.capacity) {
            put(kind, values[name]);
            continue;
        }
        for (let i = 0; i < kind.capacity; ++i) {
            kind.columns.forEach(([column, each]) => put(each, values[name]?.[i]?.[column]));
        }
    }
    return bytes;
}

// The line that the recorder writes of a record, cut where it cuts.
export function lineOf(values) {
    const cells = [];
    const put = (kind, value) => {
        if (typeof kind === "number") {
            cells.push(value ?? "");
        } else if (kind === "f32") {
            const isLong = Math.abs(value) >= 1e21;
            cells.push(isLong ? `${BigInt(value)}.000000` : (value ?? 0).toFixed(6));
        } else {
            cells.push(String(kind === "i32" ? (value ?? 0) >>> 0 : (value ?? 0)));
        }
    };
    for (const [name, kind] of layout) {
        if (!kind.capacity) {
            put(kind, values[name]);
            continue;
        }
        for (let i = 0; i < (values[countOf(name)] ?? 0); ++i) {
            kind.columns.forEach(([column, each]) => put(each, values[name][i][column]));
        }
    }
    const line = cells.join(",") + ",\n";
    return line.length > 4095 ? line.slice(0, 4095) : line;
}
