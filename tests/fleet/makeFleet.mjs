// A fleet of ten devices on two days, 200 dumps: the demo plays the sessions, and what it cannot
// play is planted in its files: gaps, a late frame, a record without a number, two sessions in one
// file.
import { execFile } from "node:child_process";
import fs from "node:fs";
import os from "node:os";
import path from "node:path";
import { promisify } from "node:util";
import { readBinary, readLine, recordSize, unknownFrame } from "./recordLayout.mjs";

const run = promisify(execFile);

export const days = ["2026-11-20", "2026-11-21"];
const devices = Array.from({ length: 10 }, (_, i) => `phone${i}`);
const causes = ["stuck-node", "slow-allocation", "thermal", "stuck-node", "slow-allocation"];
const frames = 90;

// Phone 4 is updated between the two days.
function buildOf(device, day) {
    const number = Number(device.at(-1));
    return number < 4 || (number === 4 && day === days[0]) ? "A1.231005" : "B2.240301";
}

const plays = days.flatMap((day, dayNumber) =>
    devices.flatMap((device, i) =>
        causes.map((cause, place) => ({
            day,
            device,
            cause,
            place,
            seed: 1 + place + causes.length * (i + devices.length * dayNumber),
        })),
    ),
);

async function play({ cause, seed }, demo, root) {
    await run(demo, [
        "--cause",
        cause,
        "--frames",
        frames,
        "--steady",
        "--seed",
        seed,
        "--root",
        root,
    ]);
    const inFolder = (folder) => {
        const at = path.join(root, "data/vendor", folder);
        return fs.readdirSync(at).map((name) => path.join(at, name));
    };
    const binary = inFolder("camera").filter((name) => name.endsWith(".bin"));
    const texts = inFolder("camera_frame_lost");
    if (binary.length !== 1 || texts.length !== 1) {
        throw new Error(
            `${root}: ${binary.length} binary dumps and ${texts.length} texts instead of one each`,
        );
    }
    return {
        binary: fs.readFileSync(binary[0]),
        text: fs.readFileSync(texts[0]),
        lostFrame: Number(texts[0].match(/_(\d+)\.txt$/)[1]),
    };
}

const blocksOf = (bytes) =>
    Array.from({ length: bytes.length / recordSize }, (_, i) =>
        Buffer.from(bytes.subarray(i * recordSize, (i + 1) * recordSize)),
    );

// Frames 10 to 12 are gone, 15 came before 14, and what was 17 has lost its number.
function damaged(bytes) {
    const records = blocksOf(bytes);
    const placeOf = (frame) => records.findIndex((record) => record.readUInt32LE(0) === frame);
    records.splice(placeOf(10), 3);
    const late = placeOf(14);
    [records[late], records[late + 1]] = [records[late + 1], records[late]];
    records[placeOf(17)].writeUInt32LE(unknownFrame, 0);
    return Buffer.concat(records);
}

async function inParallel(tasks, work) {
    const queue = [...tasks];
    await Promise.all(
        os.cpus().map(async () => {
            for (let task = queue.shift(); task; task = queue.shift()) {
                await work(task);
            }
        }),
    );
}

// Writes dumps/DAY/DEVICE/ below `folder` and gives what is in them, read without vdrdump: a list
// of { day, device, build, file, lostFrame, cause, sessions }, a session a list of records.
export async function makeFleet(folder, demo) {
    const played = new Map();
    await inParallel(plays, async (each) => {
        const root = path.join(folder, "played", String(each.seed));
        fs.mkdirSync(root, { recursive: true });
        played.set(each.seed, await play(each, demo, root));
    });
    const dumps = [];
    for (const { day, device, cause, place, seed } of plays) {
        const { binary, text, lostFrame } = played.get(seed);
        const at = path.join("dumps", day, device);
        fs.mkdirSync(path.join(folder, at), { recursive: true });
        const build = buildOf(device, day);
        fs.writeFileSync(path.join(folder, at, "build"), `${build}\n`);
        const add = (end, bytes, sessions, loss) => {
            const file = path.join(at, `VIDEO_DEBUG_${day.replaceAll("-", "")}_10${place}0${end}`);
            fs.writeFileSync(path.join(folder, file), bytes);
            dumps.push({ day, device, build, file, cause, lostFrame: loss, sessions });
        };
        const recordsOf = (bytes) => blocksOf(bytes).map(readBinary);
        if (place === 0) {
            const bytes = damaged(binary);
            add("00.bin", bytes, [recordsOf(bytes)], null);
        } else if (place === 1) {
            const other = played.get(seed + 1).binary;
            add(
                "00.bin",
                Buffer.concat([binary, other]),
                [recordsOf(binary), recordsOf(other)],
                null,
            );
        } else {
            add("00.bin", binary, [recordsOf(binary)], null);
        }
        const lines = text
            .toString("latin1")
            .split("\n")
            .filter((line) => line !== "");
        add(`05_${String(lostFrame).padStart(8, "0")}.txt`, text, [lines.map(readLine)], lostFrame);
    }
    fs.rmSync(path.join(folder, "played"), { recursive: true });
    return dumps;
}
