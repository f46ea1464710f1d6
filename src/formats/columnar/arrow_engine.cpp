#include "formats/columnar/arrow_engine.h"

#include <cstdlib>
#include <filesystem>

#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr const char* pythonScript = R"PY(
import json, os
try:
    import pyarrow
    import pyarrow.ipc
except ImportError:
    sys.exit(77)

def field(one):
    return pyarrow.field(one["name"], pyarrow.string(), nullable=False,
                         metadata=dict(one["metadata"]) or None)

def column(count, size):
    places = pyarrow.py_buffer(rows.read(4 * (count + 1)))
    return pyarrow.StringArray.from_buffers(count, places, pyarrow.py_buffer(rows.read(size)))

try:
    with os.fdopen(3, "rb") as text:
        order = json.load(text)
    rows = os.fdopen(0, "rb")
    schema = pyarrow.schema([field(one) for one in order["fields"]],
                            metadata=dict(order["metadata"]) or None)
    with os.fdopen(4, "wb") as made, pyarrow.ipc.new_file(made, schema) as writer:
        for count, *sizes in order["batches"]:
            columns = [column(count, size) for size in sizes]
            writer.write_batch(pyarrow.RecordBatch.from_arrays(columns, schema=schema))
except Exception as error:
    sys.exit("%s: %s" % (type(error).__name__, error))
)PY";

// Modules that lie in the folder in which a person works are none of an engine: only those of the
// folder that is named, of NODE_PATH, and what is installed for all.
constexpr const char* nodeScript = R"JS(
const fs = require('fs');
const path = require('path');

function library(named) {
    const installed = path.resolve(process.execPath, '..', '..', 'lib');
    const places = ['/', installed, '/usr/local/lib', '/usr/share/nodejs'];
    try {
        return require(named ? path.resolve(named)
                             : require.resolve('apache-arrow', { paths: places }));
    } catch (error) {
        if (error.code !== 'MODULE_NOT_FOUND') throw error;
        return process.exit(77);
    }
}

function filled(values) {
    const bytes = new Uint8Array(values.buffer, values.byteOffset, values.byteLength);
    for (let at = 0; at < bytes.length;) {
        const count = fs.readSync(0, bytes, at, bytes.length - at, null);
        if (count === 0) throw new Error('the rows end too early');
        at += count;
    }
    return values;
}

function write(bytes) {
    for (let at = 0; at < bytes.length;) at += fs.writeSync(4, bytes, at);
}

async function run(arrow) {
    const order = JSON.parse(fs.readFileSync(3, 'utf8'));
    const fields = order.fields.map((one) => new arrow.Field(
        one.name, new arrow.Utf8(), false, new Map(one.metadata)));
    const schema = new arrow.Schema(fields, new Map(order.metadata));
    const column = (length, size) => arrow.makeData({
        type: new arrow.Utf8(), length, nullCount: 0,
        valueOffsets: filled(new Int32Array(length + 1)), data: filled(new Uint8Array(size)),
    });
    async function* batches() {
        for (const [length, ...sizes] of order.batches) {
            const children = sizes.map((size) => column(length, size));
            yield new arrow.RecordBatch(schema, arrow.makeData({
                type: new arrow.Struct(fields), length, nullCount: 0, children,
            }));
        }
    }
    const writer = new arrow.RecordBatchFileWriter();
    const done = writer.writeAll(batches());
    for await (const bytes of writer) write(bytes);
    await done;
}

run(library(process.argv[1])).catch((error) => {
    console.error(`${error.name}: ${error.message}`);
    process.exit(1);
});
)JS";

constexpr const char* advice =
    "install pyarrow for Python (pip install pyarrow) or apache-arrow for Node (npm install -g "
    "apache-arrow), or let VEK_ARROW name a Python that has it, or the folder of apache-arrow";

class ArrowEngine : public Engine {
public:
    ArrowEngine(EngineFiles& files, const std::string& output)
        : Engine("the library for Arrow", advice, files, output) {}

    bool isDoneByPython(const char* python) {
        const std::string script = concat(ownModulesAlone, pythonScript);
        return isDone({python, "-c", script.c_str()});
    }
    /// With the module of a folder, or where it is "" with one that is installed.
    bool isDoneByNode(const char* folder) {
        return isDone({"node", "-e", nodeScript, "--", folder});
    }
};

void runNamed(ArrowEngine& engine, const char* named) {
    std::error_code ignored;
    const bool isFolder = std::filesystem::is_directory(named, ignored);
    if (isFolder ? engine.isDoneByNode(named) : engine.isDoneByPython(named)) return;
    engine.refuse(concat("VEK_ARROW names ", inQuotes(named),
                         isFolder ? ", and there is no apache-arrow, or no program node to run it"
                                  : ", which is not there or has no pyarrow"));
}

}  // namespace

void runArrow(std::string_view order, EngineFiles& files, const std::string& output) {
    ArrowEngine engine(files, output);
    files.order.append(order);
    files.require(output);
    const char* const named = std::getenv("VEK_ARROW");
    if (named != nullptr && *named != '\0') return runNamed(engine, named);
    if (engine.isDoneByPython("python3") || engine.isDoneByNode("")) return;
    engine.refuse("Arrow files are written by pyarrow or apache-arrow, and neither is there");
}

}  // namespace vek::formats
