#include "formats/columnar/duckdb_engine.h"

#include <cstdlib>

#include "formats/failure.h"

namespace vek::formats {

namespace {

// Python reaches the module, or the library through its C functions, and nothing of it is linked.
constexpr const char* pythonScript = R"PY(
import ctypes, ctypes.util, os

statement = os.fdopen(3).read()
path = sys.argv[1]
if not path:
    try:
        import duckdb
        duckdb.connect().execute(statement)
        sys.exit(0)
    except ImportError:
        path = ctypes.util.find_library("duckdb")
if not path:
    sys.exit(77)
try:
    library = ctypes.CDLL(path)
    library.duckdb_result_error.restype = ctypes.c_char_p
except (OSError, AttributeError) as error:
    sys.exit("no library of DuckDB: %s" % error)
database = ctypes.c_void_p()
connection = ctypes.c_void_p()
if library.duckdb_open(None, ctypes.byref(database)):
    sys.exit("cannot be opened")
if library.duckdb_connect(database, ctypes.byref(connection)):
    sys.exit("cannot be connected to")
result = (ctypes.c_uint64 * 32)()
if library.duckdb_query(connection, statement.encode(), ctypes.byref(result)):
    sys.exit(library.duckdb_result_error(ctypes.byref(result)).decode(errors="replace"))
library.duckdb_destroy_result(ctypes.byref(result))
library.duckdb_disconnect(ctypes.byref(connection))
library.duckdb_close(ctypes.byref(database))
)PY";

constexpr const char* advice =
    "install DuckDB (the program duckdb, or Python's module duckdb), or let VEK_DUCKDB name its "
    "program or its library libduckdb.so";

bool isLibrary(std::string_view path) {
    return path.find(".so") != path.npos || path.ends_with(".dylib");
}

// DuckDB as a program, and by way of Python: with the library of a path or with what it finds.
class DuckDbEngine : public Engine {
public:
    DuckDbEngine(EngineFiles& files, const std::string& output)
        : Engine("DuckDB", advice, files, output) {}

    bool isDoneByProgram(const char* program) {
        return isDone({program, "-batch", "-bail", "-init", "/dev/null", "-c", ".read /dev/fd/3"});
    }
    bool isDoneByPython(const char* library) {
        const std::string script = concat(ownModulesAlone, pythonScript);
        return isDone({"python3", "-c", script.c_str(), library});
    }
};

void runNamed(DuckDbEngine& engine, const char* named) {
    if (!isLibrary(named)) {
        if (engine.isDoneByProgram(named)) return;
        engine.refuse(
            concat("VEK_DUCKDB names the program ", inQuotes(named), ", which is not there"));
    }
    if (engine.isDoneByPython(named)) return;
    engine.refuse(
        concat("the library ", inQuotes(named), " is reached through python3, which is not there"),
        "install python3, or let VEK_DUCKDB name the program duckdb");
}

}  // namespace

void runDuckDb(std::string_view statement, EngineFiles& files, const std::string& output) {
    DuckDbEngine engine(files, output);
    files.order.append(statement);
    files.require(output);
    const char* const named = std::getenv("VEK_DUCKDB");
    if (named != nullptr && *named != '\0') return runNamed(engine, named);
    if (engine.isDoneByProgram("duckdb") || engine.isDoneByPython("")) return;
    engine.refuse("Parquet is written by DuckDB, which is not there");
}

std::string sqlName(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"') quoted += c;
    }
    return quoted += '"';
}

}  // namespace vek::formats
