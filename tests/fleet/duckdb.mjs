// The part of DuckDB's command line that the page uses, on its native library, which the npm
// registry has where Debian has no command line: [-csv] [DATABASE] < SQL.
import fs from "node:fs";
import { loadDuckdb } from "./packages.mjs";

const { DuckDBInstance } = loadDuckdb();

function cellOf(value) {
    const text = value === null ? "" : String(value);
    return /[",\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

const files = process.argv.slice(2).filter((argument) => argument !== "-csv");
const instance = await DuckDBInstance.create(files[0] ?? ":memory:", { threads: "2" });
const connection = await instance.connect();
try {
    const statements = await connection.extractStatements(fs.readFileSync(0, "utf8"));
    for (let i = 0; i < statements.count; ++i) {
        const statement = await statements.prepare(i);
        const reader = await statement.runAndReadAll();
        const rows = reader.getRows();
        if (reader.columnCount > 0 && i === statements.count - 1) {
            console.log(
                [reader.columnNames(), ...rows].map((row) => row.map(cellOf).join(",")).join("\n"),
            );
        }
    }
} catch (error) {
    console.error(`duckdb: ${error.message}`);
    process.exitCode = 1;
} finally {
    connection.closeSync();
}
