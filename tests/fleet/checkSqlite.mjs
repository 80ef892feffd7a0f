// The exported database, its schema, and the page's three questions of it.
import { answerCosts, lossesOf, nodeOfLoss } from "./fleetAnswers.mjs";
import { asNdjson } from "./checkDuckdb.mjs";
import { check, compareRows, sortedBy } from "./compare.mjs";
import { layout } from "./recordLayout.mjs";

// A stamp of any size survives as text.
const asText = (columns) =>
    columns
        .map(([name, kind]) =>
            kind === "u64" ? `CAST(t.${name} AS TEXT) AS ${name}` : `t.${name}`,
        )
        .join(", ");
const valueOf = (value, kind) =>
    value === null
        ? null
        : kind === "u64"
          ? BigInt(value)
          : kind === "f32"
            ? Math.fround(value)
            : value;

export function checkSqlite(edges, dumps, questions, { run }) {
    const ask = (database, sql) => {
        const text = run(`sqlite3 -json ${database}`, sql);
        return text === "" ? [] : JSON.parse(text);
    };
    run("vdrdump schema --engine sqlite | sqlite3 empty.db");
    const objects = "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY name;";
    run("vdrdump export edges/*.bin edges/*.txt --format sqlite -o edges.db", "", {
        mayFail: true,
    });
    compareRows("SQLite, schema", ask("empty.db", objects), ask("edges.db", objects));

    const keys = "JOIN files AS f ON f.file = t.file ORDER BY f.path, t.record";
    const scalars = layout.filter(([, kind]) => !kind.capacity);
    const rows = ask(
        "edges.db",
        `SELECT f.path AS file, f.lostFrame, t.session, t.record, ${asText(scalars)} FROM frames AS t ${keys};`,
    ).map((row) => ({
        ...row,
        record: BigInt(row.record),
        ...Object.fromEntries(scalars.map(([name, kind]) => [name, valueOf(row[name], kind)])),
    }));
    for (const [name, { columns, capacity }] of layout) {
        if (!capacity) {
            continue;
        }
        const elements = ask(
            "edges.db",
            `SELECT f.path AS file, t.record, ${asText(columns)} FROM ${name} AS t ${keys}, t.element;`,
        );
        rows.forEach((row) => {
            row[name] = elements
                .filter((each) => each.file === row.file && BigInt(each.record) === row.record)
                .map((each) =>
                    Object.fromEntries(
                        columns.map(([column, kind]) => [column, valueOf(each[column], kind)]),
                    ),
                );
        });
    }
    compareRows(
        "SQLite, edges",
        rows,
        asNdjson(edges).map((row) =>
            Object.fromEntries(
                Object.entries(row).map(([name, value]) => [
                    name,
                    value === null && layout.find(([each]) => each === name)?.[1].capacity
                        ? []
                        : value,
                ]),
            ),
        ),
    );

    run(`vdrdump export ${dumps.map((dump) => dump.file).join(" ")} --format sqlite -o dumps.db`);
    check(
        questions.length === 3,
        `the page asks SQLite ${questions.length} questions instead of 3`,
    );
    const losses = lossesOf(dumps.map((dump) => ({ ...dump, device: dump.file })));
    const [, costs, temperatures] = questions.map((sql) => ask("dumps.db", sql));
    compareRows(
        "SQLite, temperatures",
        temperatures,
        sortedBy(
            losses.map(({ file, session, lostFrame, record }) => ({
                path: file,
                session,
                lostFrame,
                frame: record.frameNumber,
                front: record.sysStatusInfo_shellFrontTemp,
                back: record.sysStatusInfo_shellBackTemp,
                thermalLevel: record.sysStatusInfo_thermalLevel,
            })),
            "path",
            "session",
            "lostFrame",
        ).map(({ session, ...row }) => row),
    );
    const perFile = dumps.flatMap((dump) =>
        answerCosts([{ ...dump, lostFrame: null, build: dump.file }]).map(({ build, ...row }) => ({
            path: build,
            ...row,
        })),
    );
    compareRows(
        "SQLite, costs",
        sortedBy(costs, "path", "name"),
        sortedBy(perFile, "path", "name"),
        1e-12,
    );
    // A node that got stuck goes before all others, in this question as in the fleet's.
    const slowest = ask("dumps.db", questions[0]);
    for (const loss of losses.filter((each) => nodeOfLoss(each).isStuck)) {
        check(
            slowest.some(
                (row) =>
                    row.path === loss.file &&
                    row.lostFrame === loss.lostFrame &&
                    row.node === nodeOfLoss(loss).node &&
                    row.stuck === 1,
            ),
            `SQLite, slowest node: ${loss.file}, ${loss.lostFrame}`,
        );
    }
}
