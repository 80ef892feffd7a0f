import fs from "node:fs";

// The fenced blocks of a page: language, name (what stands behind the language), text.
export function documentBlocks(page) {
    const fences = /^```(\w+)?(?: (\S+))?\n([\s\S]*?)^```$/gm;
    return [...fs.readFileSync(page, "utf8").matchAll(fences)].map(([, language, name, text]) => ({
        language,
        name,
        text,
    }));
}
