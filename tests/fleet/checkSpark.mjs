// There is no Spark here: its grammar takes the statements, and the declared types are those of the
// columns.
import { check, compareRows } from "./compare.mjs";
import { layout } from "./recordLayout.mjs";
import { loadSparkParser } from "./packages.mjs";

const types = {
    u8: "SMALLINT",
    u16: "INT",
    u32: "BIGINT",
    u64: "DECIMAL(20,0)",
    i16: "SMALLINT",
    i32: "INT",
    f32: "FLOAT",
};
const typeOf = (kind) => types[kind] ?? "STRING";
const columnTypeOf = (kind) =>
    kind.capacity
        ? `ARRAY<STRUCT<${kind.columns.map(([name, each]) => `${name}: ${typeOf(each)}`).join(", ")}>>`
        : typeOf(kind);

export function checkSpark({ run }) {
    const sql = run("vdrdump schema --engine spark");
    const { SparkSQL } = loadSparkParser();
    const errors = new SparkSQL().validate(sql);
    check(errors.length === 0, `Spark's grammar: ${JSON.stringify(errors[0])}`);
    check(
        new SparkSQL().validate("CREATE TABLE a (b ARRAY<STRUCT<c: INT>) USING parquet;").length !==
            0,
        "Spark's grammar takes anything",
    );
    const declared = [...layout.map(([name, kind]) => ({ name, type: columnTypeOf(kind) }))];
    for (const statement of ["CREATE TABLE", "CREATE OR REPLACE TEMPORARY VIEW frames_ndjson"]) {
        const text = sql.slice(sql.indexOf(statement));
        const columns = text
            .slice(text.indexOf("(\n") + 2, text.indexOf("\n)"))
            .split(",\n")
            .map((line) => line.trim().match(/^(\S+) (.*)$/))
            .map(([, name, type]) => ({ name, type }));
        compareRows(`Spark, ${statement}`, columns.slice(4), declared);
    }
}
