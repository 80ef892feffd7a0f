// Saves the named blocks of a page as the files that they are. As a program: of the page that is
// its argument.
import fs from "node:fs";
import { fileURLToPath } from "node:url";
import { documentBlocks } from "./documentBlocks.mjs";

export function savePage(page) {
    const blocks = documentBlocks(page);
    for (const { name, text } of blocks.filter((block) => block.name?.includes("."))) {
        fs.writeFileSync(name, text, { mode: name.endsWith(".sh") ? 0o755 : 0o644 });
    }
    return blocks;
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
    savePage(process.argv[2]);
}
