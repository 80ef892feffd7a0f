// What comes from the npm registry lies where scripts/check-fleet put it.
import { createRequire } from "node:module";
import path from "node:path";

const require = createRequire(path.join(process.env.FLEET_PACKAGES, "package.json"));

export const loadDuckdb = () => require("@duckdb/node-api");
export const loadClickhouse = () => require("chdb");

// It is written for bundlers, which find what it imports where Node.js does not.
export function loadSparkParser() {
    const outfile = path.resolve("sparkParser.cjs");
    require("esbuild").buildSync({
        entryPoints: [require.resolve("dt-sql-parser")],
        outfile,
        bundle: true,
        platform: "node",
        format: "cjs",
    });
    return require(outfile);
}
