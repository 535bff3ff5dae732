// Prints every user table of an Access file as mdb-reader reads it: one JSON object per table, with columns and rows.
// usage: node read.mjs FOLDER-OF-MODULES FILE [PASSWORD]
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";

const [modules, file, password] = process.argv.slice(2);
const { default: MDBReader } = await import(
    pathToFileURL(createRequire(modules + "/node_modules/").resolve("mdb-reader")).href);

function plain(value) {
    if (value === undefined || value === null) return null;
    if (value instanceof Date) return value.toISOString().slice(0, 19);
    if (value instanceof Uint8Array) return Buffer.from(value).toString("hex");
    return typeof value === "bigint" ? value.toString() : value;
}

const reader = new MDBReader(readFileSync(file), password === undefined ? {} : { password });
for (const name of reader.getTableNames()) {
    const table = reader.getTable(name);
    const columns = table.getColumns().map(({ name, type }) => ({ name, type }));
    const rows = table.getData().map((row) => columns.map((column) => plain(row[column.name])));
    console.log(JSON.stringify({ table: name, columns, rows }));
}
