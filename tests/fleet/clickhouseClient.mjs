// The part of clickhouse-client that the page uses, on ClickHouse's library of today, which the npm
// registry has beside the old server of Debian: [--query SQL] < data or SQL. Tables are kept in the
// folder $FLEET_CLICKHOUSE.
import fs from "node:fs";
import { loadClickhouse } from "./packages.mjs";

const { Session } = loadClickhouse();

const at = process.argv.indexOf("--query");
const input = fs.readFileSync(0, "utf8");
const query = at < 0 ? input : `${process.argv[at + 1]}\n${input}`;
const session = new Session(process.env.FLEET_CLICKHOUSE);
try {
    process.stdout.write(session.query(query, "TabSeparated") ?? "");
} catch (error) {
    console.error(`clickhouse-client: ${error.message}`);
    process.exitCode = 1;
}
