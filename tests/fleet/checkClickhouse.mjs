// The page's ClickHouse, in whichever release stands behind `clickhouse-client`.
import { answerCosts, gapsOf, groupBy, mean, nodeOfLoss } from "./fleetAnswers.mjs";
import { asNdjson } from "./checkDuckdb.mjs";
import { check, compareRows, sortedBy } from "./compare.mjs";
import { layout } from "./recordLayout.mjs";

// "2/202/0" of "0x2:0xca:0x0"; old releases have no hexadecimal numbers without zeros in front.
const decimal = (node) => node.split(":").map(Number).join("/");

const types = {
    u8: "UInt8",
    u16: "UInt16",
    u32: "UInt32",
    u64: "UInt64",
    i16: "Int16",
    i32: "Int32",
    f32: "Float32",
};
const typeOf = (kind) => types[kind] ?? "String";
const elementTypeOf = (kind) => (kind === "f32" ? "Nullable(Float32)" : typeOf(kind));

// Old releases make an array of structures as many arrays.
function typesOf([name, kind], isOld) {
    if (!kind.capacity) {
        return [{ name, type: `Nullable(${typeOf(kind)})` }];
    }
    const members = kind.columns.map(([column, each]) => `${column} ${elementTypeOf(each)}`);
    return isOld
        ? kind.columns.map(([column, each]) => ({
              name: `${name}.${column}`,
              type: `Array(${elementTypeOf(each)})`,
          }))
        : [{ name, type: `Array(Tuple(${members.join(", ")}))` }];
}

const lines = (text) =>
    text
        .split("\n")
        .filter((line) => line !== "")
        .map((line) => line.split("\t"));

function valueOf(value, kind) {
    if (value === null || typeof kind === "number") {
        return value;
    }
    return kind === "u64" ? BigInt(value) : kind === "f32" ? Math.fround(value) : Number(value);
}

// As it stands in JSON; what is 64 bits wide is a string.
function rowOf(object) {
    const row = {
        file: object.file,
        lostFrame: object.lostFrame,
        session: object.session,
        record: BigInt(object.record),
    };
    for (const [name, kind] of layout) {
        if (!kind.capacity) {
            row[name] = valueOf(object[name], kind);
            continue;
        }
        const elements =
            object[name] ??
            object[`${name}.${kind.columns[0][0]}`].map((_, i) =>
                Object.fromEntries(
                    kind.columns.map(([column]) => [column, object[`${name}.${column}`][i]]),
                ),
            );
        row[name] = elements.map((element) =>
            Object.fromEntries(
                kind.columns.map(([column, each]) => [column, valueOf(element[column], each)]),
            ),
        );
    }
    return row;
}

export function checkClickhouse({ name: release, isOld }, block, edges, dumps, { run, day }) {
    const client = (sql) => run("clickhouse-client", sql);
    const clear = () => client("DROP TABLE IF EXISTS frames");
    clear();
    // The page's own commands, once as they stand and once for the edges.
    run(block.replaceAll(/dumps\/\S+\.bin dumps\/\S+\.txt/g, "edges/*.bin edges/*.txt"), "", {
        mayFail: true,
    });
    const found = lines(client("DESCRIBE TABLE frames")).map(([name, type]) => ({
        name,
        type: type.replaceAll(/\\n */g, " ").replaceAll("( ", "("),
    }));
    compareRows(
        `${release}, types`,
        found.slice(4),
        layout.flatMap((column) => typesOf(column, isOld)),
    );
    const rows = client(
        "SELECT * FROM frames ORDER BY file, record" +
            " SETTINGS output_format_json_quote_64bit_integers = 1 FORMAT JSONEachRow",
    )
        .split("\n")
        .filter((line) => line !== "");
    const expected = asNdjson(edges).map((row) =>
        Object.fromEntries(
            Object.entries(row).map(([name, value]) => [
                name,
                value === null && layout.find(([each]) => each === name)?.[1].capacity ? [] : value,
            ]),
        ),
    );
    compareRows(
        `${release}, edges`,
        rows.map((line) => rowOf(JSON.parse(line))),
        expected,
    );

    clear();
    run(block);
    const ofDay = dumps.filter((dump) => dump.day === day);
    const ask = (name) => lines(run(`clickhouse-client < ${name}`));
    compareRows(
        `${release}, gaps`,
        ask("clickhouse-gaps.sql").map(([file, session, firstFrame, lastFrame]) => ({
            file,
            session: Number(session),
            firstFrame: Number(firstFrame),
            lastFrame: Number(lastFrame),
        })),
        sortedBy(gapsOf(ofDay), "file", "session", "firstFrame").map(
            ({ file, session, firstFrame, lastFrame }) => ({
                file,
                session,
                firstFrame,
                lastFrame,
            }),
        ),
    );

    const announced = ofDay
        .filter((dump) => dump.lostFrame !== null)
        .map((dump) => {
            const records = dump.sessions[0];
            const record = records.find((each) => each.frameNumber === dump.lostFrame);
            return { records, record };
        });
    const stuck = announced
        .map((loss) => ({ ...loss, ...nodeOfLoss(loss) }))
        .filter((loss) => loss.isStuck);
    compareRows(
        `${release}, stuck nodes`,
        ask("clickhouse-stuck.sql").map(([stuckIn, losses, front]) => ({
            stuckIn,
            losses: Number(losses),
            front: Number(front),
        })),
        sortedBy(
            [...groupBy(stuck, (loss) => decimal(loss.node))].map(([stuckIn, group]) => ({
                stuckIn,
                losses: group.length,
                front: mean(group.map((loss) => loss.record.sysStatusInfo_shellFrontTemp)),
            })),
            "stuckIn",
        ),
        1e-12,
    );
    compareRows(
        `${release}, costs`,
        ask("clickhouse-costs.sql").map(([name, runs, meanCost, highestCost]) => ({
            name,
            runs: Number(runs),
            meanCost: Number(meanCost),
            highestCost: Number(highestCost),
        })),
        sortedBy(answerCosts(ofDay.map((dump) => ({ ...dump, build: "any" }))), "name").map(
            ({ build, ...row }) => row,
        ),
        1e-12,
    );
    check(rows.length > 0, `${release}: nothing was loaded`);
}
