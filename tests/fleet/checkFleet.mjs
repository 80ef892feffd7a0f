// Runs what docs/analysis.md shows, in the folder it is called in, with vdrdump and the engines in
// the PATH, and compares every answer with the one worked out from the dumps themselves.
// Arguments: the page, the demo's program, and STEP...: the engines to check.
import { spawnSync } from "node:child_process";
import fs from "node:fs";
import { checkClickhouse } from "./checkClickhouse.mjs";
import { checkEdgesInDuckdb, checkLake } from "./checkDuckdb.mjs";
import { checkSpark } from "./checkSpark.mjs";
import { checkSqlite } from "./checkSqlite.mjs";
import { check, finishChecks } from "./compare.mjs";
import { makeEdgeDumps } from "./edgeDumps.mjs";
import { gapsOf, lossesOf, nodeOfLoss } from "./fleetAnswers.mjs";
import { days, makeFleet } from "./makeFleet.mjs";
import { savePage } from "./savePage.mjs";

// What a user's shell would do with it.
function run(command, input = "", { mayFail = false } = {}) {
    const done = spawnSync("bash", ["-o", "pipefail", "-c", command], {
        input,
        encoding: "utf8",
        maxBuffer: 2 ** 30,
        stdio: ["pipe", "pipe", mayFail ? "ignore" : "inherit"],
    });
    if (done.status !== 0 && !mayFail) {
        throw new Error(`exit status ${done.status} of: ${command}`);
    }
    return done.stdout;
}

// The rows of a csv with a header, numbers as such.
function ask(file) {
    const [header, ...lines] = run(`duckdb -csv fleet.duckdb < ${file}`)
        .trimEnd()
        .split("\n")
        .map((line) => line.split(","));
    return lines.map((line) =>
        Object.fromEntries(
            header.map((name, i) => [
                name,
                line[i] !== "" && Number.isFinite(Number(line[i])) ? Number(line[i]) : line[i],
            ]),
        ),
    );
}

// The demo's causes hit nodes that are known: what is worked out agrees with what was played.
function checkWhatWasPlanted(dumps, gaps, losses) {
    const nodeOf = { "stuck-node": "0x2:0xca:0x0", "slow-allocation": "0x1:0x67:0x0" };
    check(dumps.length === 200, `${dumps.length} dumps instead of 200`);
    check(
        gaps.length === 2 * 20 &&
            gaps.every(
                ({ firstFrame, lastFrame }) =>
                    (firstFrame === 10 && lastFrame === 12) ||
                    (firstFrame === 17 && lastFrame === 17),
            ),
        `${gaps.length} gaps, not the 40 that were planted`,
    );
    const played = losses.filter((each) => each.lostFrame > 17);
    check(played.length === 100, `${played.length} losses instead of the 100 that were played`);
    for (const loss of played) {
        const { node, isStuck } = nodeOfLoss(loss);
        check(
            (nodeOf[loss.cause] ?? node) === node && isStuck === (loss.cause === "stuck-node"),
            `${loss.file}: ${node} for ${loss.cause}`,
        );
    }
}

const [page, demo, ...steps] = process.argv.slice(2);
const step = (text) => console.log(`${process.uptime().toFixed(1)} s: ${text}`);
const blocks = savePage(page);
const commands = (name) => blocks.find((block) => block.name === name).text;
const questions = blocks
    .filter((block) => block.language === "sql" && !block.name)
    .map((block) => block.text);
const edges = makeEdgeDumps("edges");
for (const format of ["csv", "ndjson"]) {
    run(`vdrdump export edges/*.bin edges/*.txt --format ${format} -o edges.${format}`, "", {
        mayFail: true,
    });
}
step("200 dumps of ten devices and two days");
const dumps = await makeFleet(".", demo);
const gaps = gapsOf(dumps);
const losses = lossesOf(dumps);
checkWhatWasPlanted(dumps, gaps, losses);

const shell = { run, ask, day: days[0] };
const clickhouse = (release, name) => checkClickhouse(release, commands(name), edges, dumps, shell);
const checks = {
    duckdb: async () => {
        await checkEdgesInDuckdb(edges, shell);
        checkLake(dumps, gaps, losses, days, shell);
    },
    "clickhouse-old": () =>
        clickhouse({ name: "ClickHouse of Debian", isOld: true }, "clickhouse-old"),
    clickhouse: () => {
        process.env.PATH = `${process.cwd()}/today:${process.env.PATH}`;
        clickhouse({ name: "ClickHouse of today", isOld: false }, "clickhouse");
    },
    sqlite: () => checkSqlite(edges, dumps, questions, shell),
    spark: () => checkSpark(shell),
};
for (const name of steps) {
    step(name);
    try {
        await checks[name]();
    } catch (error) {
        check(false, `${name}: ${error.message}`);
    }
}
step("done");
process.exitCode = finishChecks() ? 0 : 1;
