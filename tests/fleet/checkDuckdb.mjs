// The lake of the page, in DuckDB.
import fs from "node:fs";
import path from "node:path";
import { answerCosts, answerGaps, answerNodes, answerRates } from "./fleetAnswers.mjs";
import { check, compareRows, sortedBy } from "./compare.mjs";
import { layout } from "./recordLayout.mjs";
import { loadDuckdb } from "./packages.mjs";

const types = {
    u8: "UTINYINT",
    u16: "USMALLINT",
    u32: "UINTEGER",
    u64: "UBIGINT",
    i16: "SMALLINT",
    i32: "INTEGER",
    f32: "FLOAT",
};
const typeOf = (kind) => types[kind] ?? "VARCHAR";
const keys = [
    ["file", "VARCHAR"],
    ["lostFrame", "UINTEGER"],
    ["session", "UINTEGER"],
    ["record", "UBIGINT"],
];
const declared = [
    ...keys,
    ...layout.map(([name, kind]) => [
        name,
        kind.capacity
            ? `STRUCT(${kind.columns.map(([column, each]) => `"${column}" ${typeOf(each)}`).join(", ")})[]`
            : typeOf(kind),
    ]),
];

function plain(value) {
    if (value?.items) {
        return value.items.map(plain);
    }
    return value?.entries
        ? Object.fromEntries(Object.entries(value.entries).map(([key, each]) => [key, plain(each)]))
        : value;
}

// nan and inf are null in ndjson.
export function asNdjson(rows) {
    const value = (each) => (typeof each === "number" && !Number.isFinite(each) ? null : each);
    const element = (each) =>
        Object.fromEntries(Object.entries(each).map(([key, part]) => [key, value(part)]));
    return rows.map((row) =>
        Object.fromEntries(
            Object.entries(row).map(([key, each]) => [
                key,
                Array.isArray(each) ? each.map(element) : value(each),
            ]),
        ),
    );
}

export async function checkEdgesInDuckdb(edges, { run }) {
    run("vdrdump schema --engine duckdb > frames.sql");
    const { DuckDBInstance } = loadDuckdb();
    const connection = await (await DuckDBInstance.create(":memory:")).connect();
    await connection.run(fs.readFileSync("frames.sql", "utf8"));
    await connection.run("COPY (FROM frames_csv('edges.csv')) TO 'edges.parquet'");
    await connection.run("INSERT INTO frames FROM frames_ndjson('edges.ndjson')");
    const rowsOf = async (from) =>
        (await connection.runAndReadAll(`FROM ${from} ORDER BY file, record`))
            .getRowObjects()
            .map((row) =>
                Object.fromEntries(Object.entries(row).map(([key, value]) => [key, plain(value)])),
            );
    compareRows("DuckDB, csv", await rowsOf("frames_csv('edges.csv')"), edges);
    compareRows("DuckDB, csv through Parquet", await rowsOf("'edges.parquet'"), edges);
    compareRows("DuckDB, ndjson", await rowsOf("frames"), asNdjson(edges));
    for (const from of [
        "frames",
        "frames_csv('edges.csv')",
        "frames_ndjson('edges.ndjson')",
        "'edges.parquet'",
    ]) {
        const found = (await connection.runAndReadAll(`DESCRIBE FROM ${from}`)).getRowObjects();
        compareRows(
            `DuckDB, types of ${from}`,
            found.map(({ column_name, column_type }) => ({
                name: column_name,
                type: column_type.replace(/(?<=[(,] ?)"?(\w+)"? (?=[A-Z])/g, '"$1" '),
            })),
            declared.map(([name, type]) => ({ name, type })),
        );
    }
    connection.closeSync();
}

// Size, time and place of each file of a day.
const stateOf = (day) =>
    fs
        .readdirSync(path.join("lake", `day=${day}`), { recursive: true })
        .sort()
        .map((name) => {
            const { ino, size, mtimeMs } = fs.statSync(path.join("lake", `day=${day}`, name));
            return `${name} ${ino} ${size} ${mtimeMs}`;
        })
        .join("\n");

export function checkLake(dumps, gaps, losses, days, { run, ask }) {
    run(`./add-day.sh ${days[0]} && duckdb fleet.duckdb < fleet.sql`);
    const ofFirst = (list) => list.filter((each) => each.day === days[0]);
    const first = stateOf(days[0]);
    compareRows(
        "gaps of one day",
        ask("gaps.sql"),
        sortedBy(answerGaps(ofFirst(gaps)), "day", "device"),
    );
    run(`./add-day.sh ${days[1]}`);
    check(stateOf(days[0]) === first, "the second day touched the first one's files");
    let isAddedTwice = true;
    try {
        run(`./add-day.sh ${days[0]} 2>/dev/null`);
    } catch {
        isAddedTwice = false;
    }
    check(!isAddedTwice && stateOf(days[0]) === first, "a day that is there was added again");

    const near = 1e-12;
    const nodes = sortedBy(
        answerNodes(losses).map((row) => ({ ...row, order: -row.losses })),
        "order",
        "build",
        "node",
    ).map(({ order, ...row }) => row);
    compareRows("nodes", ask("nodes.sql"), nodes);
    compareRows(
        "rates",
        ask("rates.sql"),
        sortedBy(answerRates(dumps, losses), "build", "thermalLevel"),
        near,
    );
    compareRows("gaps", ask("gaps.sql"), sortedBy(answerGaps(gaps), "day", "device"));
    compareRows("costs", ask("costs.sql"), sortedBy(answerCosts(dumps), "build", "name"), near);
}
