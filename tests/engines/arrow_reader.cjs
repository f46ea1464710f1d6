// Reads a file of Arrow by the library in VEKDB_APACHE_ARROW and prints what it holds, each line
// JSON: the metadata, the columns, and every row.

const fs = require('fs');
const arrow = require(process.env.VEKDB_APACHE_ARROW);

const table = arrow.tableFromIPC(fs.readFileSync(process.argv[2]));
const { fields, metadata } = table.schema;
const names = fields.map((field) => field.name);
const lines = [JSON.stringify([...metadata])];
lines.push(JSON.stringify(fields.map((field) => [
    field.name, String(field.type), field.nullable, ...field.metadata])));
for (const batch of table.batches) {
    const columns = names.map((_, i) => batch.getChildAt(i));
    for (let row = 0; row < batch.numRows; ++row) {
        const cells = columns.map((column, i) => [names[i], column.get(row)]);
        lines.push('{' + cells.map(([name, cell]) =>
            `${JSON.stringify(name)}: ${JSON.stringify(cell)}`).join(', ') + '}');
    }
}
process.stdout.write(lines.join('\n') + '\n');
