// What comes from the npm registry lies where scripts/check-fleet put it.
import { createRequire } from "node:module";
import path from "node:path";

const require = createRequire(path.join(process.env.FLEET_PACKAGES, "package.json"));

export const loadDuckdb = () => require("@duckdb/node-api");
export const loadClickhouse = () => require("chdb");
export const loadSparkParser = () => require("dt-sql-parser");
