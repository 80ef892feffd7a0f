// Comparisons that say where two tables differ.

let checks = 0;
const failures = [];

export function check(isRight, what) {
    ++checks;
    if (!isRight) {
        failures.push(what);
    }
}

// One spelling for what engines spell differently: numbers of any width, -0 and 0, nan and inf.
function spelled(value) {
    if (value === null || value === undefined) {
        return "null";
    }
    if (typeof value === "object") {
        const parts = Array.isArray(value) ? value : Object.values(value);
        return `[${parts.map(spelled).join(",")}]`;
    }
    return Object.is(value, -0)
        ? "0"
        : typeof value === "string"
          ? JSON.stringify(value)
          : String(value);
}

// Rows are objects; `tolerance` is how far numbers may be apart, relative to the expected ones.
export function compareRows(what, actual, expected, tolerance = 0) {
    check(
        actual.length === expected.length,
        `${what}: ${actual.length} rows instead of ${expected.length}`,
    );
    for (let i = 0; i < Math.min(actual.length, expected.length); ++i) {
        for (const column of Object.keys(expected[i])) {
            const found = actual[i][column];
            const wanted = expected[i][column];
            const isNear =
                typeof wanted === "number" &&
                tolerance !== 0 &&
                Math.abs(Number(found) - wanted) <= Math.abs(wanted) * tolerance;
            check(
                isNear || spelled(found) === spelled(wanted),
                `${what}, row ${i}, ${column}: ${spelled(found)} instead of ${spelled(wanted)}`,
            );
        }
    }
}

export const sortedBy = (rows, ...columns) =>
    [...rows].sort((a, b) => {
        const column = columns.find((each) => a[each] !== b[each]);
        return column === undefined ? 0 : a[column] < b[column] ? -1 : 1;
    });

// False, and every difference told, where there was one.
export function finishChecks() {
    failures.slice(0, 40).forEach((failure) => console.error(failure));
    console.log(`${checks - failures.length} passed, ${failures.length} failed`);
    return failures.length === 0 && checks > 0;
}
