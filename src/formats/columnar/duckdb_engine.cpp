#include "formats/columnar/duckdb_engine.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr int notThere = 77;
constexpr std::size_t mostTold = 600;

// Python reaches the module, or the library through its C functions, and nothing of it is linked.
constexpr const char* pythonScript = R"PY(
import ctypes, ctypes.util, os, sys

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

// Its messages as one line that harms no terminal.
std::string toldIn(ScratchFile& messages) {
    std::string text(mostTold, ' ');
    text.resize(messages.read(0, text.data(), text.size()));
    const auto isControl = [](unsigned char c) { return c < ' ' || c == 0x7F; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    while (text.ends_with(' ')) text.pop_back();
    return text;
}

class Engine {
public:
    Engine(EngineFiles& files, const std::string& output) : files_(files), output_(output) {}

    /// Whether the program is there, and did it.
    bool isDoneByProgram(const char* program) {
        return isDone({program, "-batch", "-bail", "-init", "/dev/null", "-c", ".read /dev/fd/3"});
    }
    /// The same of Python, with the library of that path or with what it finds.
    bool isDoneByPython(const char* library) {
        return isDone({"python3", "-c", pythonScript, library});
    }
    [[noreturn]] void refuse(const std::string& found, const std::string& then) const {
        throw Failure{unwritable, output_, {0, "", found, "", then}};
    }

private:
    bool isDone(const std::vector<const char*>& command) {
        const ForeignEnd end =
            runForeignProgram(command, {files_.rows.descriptor(), files_.messages.descriptor(),
                                        files_.messages.descriptor(), files_.order.descriptor(),
                                        files_.made.descriptor()});
        if (end.error == ENOENT || (end.error == 0 && end.exitCode == notThere)) return false;
        if (end.error != 0) {
            refuse(concat(command[0], " cannot be started: ", std::strerror(end.error)), advice);
        }
        if (end.exitCode == 0) return true;
        const std::string told = toldIn(files_.messages);
        refuse(concat("DuckDB ended with ", std::to_string(end.exitCode),
                      told.empty() ? "" : " and said: ", told),
               "");
    }

    EngineFiles& files_;
    const std::string& output_;
};

void runNamed(Engine& engine, const char* named) {
    if (!isLibrary(named)) {
        if (engine.isDoneByProgram(named)) return;
        engine.refuse(
            concat("VEK_DUCKDB names the program ", inQuotes(named), ", which is not there"),
            advice);
    }
    if (engine.isDoneByPython(named)) return;
    engine.refuse(
        concat("the library ", inQuotes(named), " is reached through python3, which is not there"),
        "install python3, or let VEK_DUCKDB name the program duckdb");
}

}  // namespace

void runDuckDb(std::string_view statement, EngineFiles& files, const std::string& output) {
    Engine engine(files, output);
    if (!files.order.append(statement)) {
        engine.refuse(concat("no temporary file: ", std::strerror(files.order.error())),
                      "make room in the folder for temporary files");
    }
    const char* const named = std::getenv("VEK_DUCKDB");
    if (named != nullptr && *named != '\0') return runNamed(engine, named);
    if (engine.isDoneByProgram("duckdb") || engine.isDoneByPython("")) return;
    engine.refuse("Parquet is written by DuckDB, which is not there", advice);
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
