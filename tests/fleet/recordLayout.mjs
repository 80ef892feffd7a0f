// A frame record as docs/formats.md describes it, written down a second time and read without
// vdrdump, so that a column that moves, or is called or typed otherwise, does not agree with it.

// Bytes, and what DataView calls it.
const kinds = {
    u8: [1, "Uint8"],
    u16: [2, "Uint16"],
    u32: [4, "Uint32"],
    u64: [8, "BigUint64"],
    i16: [2, "Int16"],
    i32: [4, "Int32"],
    f32: [4, "Float32"],
};

// Columns as pairs of name and kind; a number is the width of a text, "words*5" is words_0 to _4.
function columns(text, prefix = "") {
    return text
        .trim()
        .split(/\s+/)
        .flatMap((column) => {
            const [name, kind] = column.split(":");
            const [base, count] = name.split("*");
            const names = count
                ? Array.from({ length: Number(count) }, (_, i) => `${base}_${i}`)
                : [name];
            return names.map((each) => [prefix + each, kinds[kind] ? kind : Number(kind)]);
        });
}

function array(name, capacity, text) {
    return [
        [`${name}Count`, "u8"],
        [name, { capacity, columns: columns(text) }],
    ];
}

const dependencies = (name) =>
    columns(`set${name}:u64`).concat(columns("Gyro:u64 Ois:u64 Accel:u64 Mag:u64", `get${name}`));

// In the order of the layout; the kind of an array is an object.
export const layout = [
    ...columns("frameNumber:u32 cslInfo_value:u32 cslInfo_stamp:u64"),
    ...columns("masterCameraId:u8 manualCaptureTag:u8 sensorModeIndex:u8 zoomRatio:f32"),
    ...columns("cpu0Freq:i32 cpu4Freq:i32 cpu7Freq:i32 cpuUsage:u16", "sysStatusInfo_"),
    ...columns("loadAvg1:f32 loadAvg5:f32 loadAvg15:f32", "sysStatusInfo_"),
    ...columns("shellFrontTemp:i32 shellBackTemp:i32 shellFrameTemp:i32", "sysStatusInfo_"),
    ...columns("memFree:u32 memAvailable:u32 usedMem:u32 sceneMode:u16", "sysStatusInfo_"),
    ...columns("thermalLevel:u8 thermalEscapeState:u8", "sysStatusInfo_"),
    ...columns("captureType:u8 videoAction:u8"),
    ...array("featureRequestStateInfo", 15, "id:u32 state:u8 stamp:u64"),
    ...array("featureMessageTypeInfo", 15, "id:u32 state:u8 stamp:u64"),
    ...array("pluginAlgoCostTime", 30, "name:6 cost:u8"),
    ...array("semantAlgoCostTime", 30, "name:6 cost:u8"),
    ...array("nodeInfo", 60, "ids*3:u32 stamps*4:u64"),
    ...["GmeNcsDep", "EisV2NcsDep", "EisV3NcsDep"].flatMap(dependencies),
    ...columns("words*2:u32 ratios*6:f32 word2:u32 short0:i16", "ae_af_awb_info_"),
    ...columns("words3*5:u32 short1:i16", "ae_af_awb_info_"),
    ...columns("gains*9:f32 word:u32", "awbInfo_qawb_cap_"),
    ...array("awbInfo_qawb_cap_sa", 10, "name:15 value:f32"),
    ...columns("itemName:40 allocSizeKB:u32", "memoryAllocTimeoutInfo_"),
    ...columns("allocTimeSec:u16 itemType:u8", "memoryAllocTimeoutInfo_"),
];

// What only bytes can say.
export const negativeNan = "-nan";
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
        .map((byte) =>
            byte >= 0x20 && byte <= 0x7e && byte !== 0x5c
                ? String.fromCharCode(byte)
                : `\\x${byte.toString(16).padStart(2, "0")}`,
        )
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
        const value = view[`get${kinds[kind][1]}`](from, true);
        return kind === "f32" ? printed(value) : value;
    };
    const record = {};
    for (const [name, kind] of layout) {
        if (!kind.capacity) {
            record[name] = next(kind);
            continue;
        }
        const count = record[countOf(name)];
        const end =
            at + kind.capacity * kind.columns.reduce((all, [, each]) => all + sizeOf(each), 0);
        const elements = [];
        for (let i = 0; i < Math.min(count, kind.capacity); ++i) {
            const element = Object.fromEntries(
                kind.columns.map(([column, each]) => [column, next(each)]),
            );
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
    cells.pop(); // behind the last comma is nothing, or a value that was cut
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
            const element = Object.fromEntries(
                kind.columns.map(([column, each]) => [column, next(each)]),
            );
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
        } else if (value === negativeNan) {
            view.setUint32(at, 0xffc00000, true);
        } else if (value !== undefined) {
            view[`set${kinds[kind][1]}`](at, value, true);
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
