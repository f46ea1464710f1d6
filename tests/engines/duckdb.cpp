#include "engines/duckdb.h"

#include <cstdint>
#include <cstdlib>

#include <dlfcn.h>

#include <vekdb/arrow/arrow.h>

namespace {

// As duckdb.h declares them.
struct Result {
    std::uint64_t fields[8];
};

void* symbolOf(const char* name) {
    static void* const library = [] {
        const char* const path = std::getenv("VEKDB_DUCKDB");
        if (path == nullptr) throw std::runtime_error("VEKDB_DUCKDB names no library");
        void* const opened = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (opened == nullptr) throw std::runtime_error(::dlerror());
        return opened;
    }();
    void* const symbol = ::dlsym(library, name);
    if (symbol == nullptr) throw std::runtime_error(std::string("there is no ") + name);
    return symbol;
}

template <class Function>
Function* functionOf(const char* name) {
    return reinterpret_cast<Function*>(symbolOf(name));
}

void require(int state, const std::string& what) {
    if (state != 0) throw std::runtime_error(what);
}

// An answer whose batches are asked for one after the other.
struct ArrowAnswer {
    void* result;

    static void* of(ArrowArrayStream* stream) {
        return static_cast<ArrowAnswer*>(stream->private_data)->result;
    }
    static int schema(ArrowArrayStream* stream, ArrowSchema* out) {
        return functionOf<int(void*, ArrowSchema**)>("duckdb_query_arrow_schema")(of(stream), &out);
    }
    static int next(ArrowArrayStream* stream, ArrowArray* out) {
        *out = {};
        return functionOf<int(void*, ArrowArray**)>("duckdb_query_arrow_array")(of(stream), &out);
    }
    static void release(ArrowArrayStream* stream) {
        auto* const answer = static_cast<ArrowAnswer*>(stream->private_data);
        functionOf<void(void**)>("duckdb_destroy_arrow")(&answer->result);
        delete answer;
        stream->release = nullptr;
    }
};

}  // namespace

DuckDb::DuckDb() {
    require(functionOf<int(const char*, void**)>("duckdb_open")(nullptr, &database_), "open");
    require(functionOf<int(void*, void**)>("duckdb_connect")(database_, &connection_), "connect");
}

DuckDb::~DuckDb() {
    functionOf<void(void**)>("duckdb_disconnect")(&connection_);
    functionOf<void(void**)>("duckdb_close")(&database_);
}

Answer DuckDb::ask(const std::string& statement) {
    Result result = {};
    const int state = functionOf<int(void*, const char*, Result*)>("duckdb_query")(
        connection_, statement.c_str(), &result);
    std::string error;
    if (state != 0) error = functionOf<const char*(Result*)>("duckdb_result_error")(&result);
    Answer answer;
    const auto rows = functionOf<std::uint64_t(Result*)>("duckdb_row_count")(&result);
    const auto columns = functionOf<std::uint64_t(Result*)>("duckdb_column_count")(&result);
    auto* const text =
        functionOf<char*(Result*, std::uint64_t, std::uint64_t)>("duckdb_value_varchar");
    for (std::uint64_t row = 0; state == 0 && row < rows; ++row) {
        auto& values = answer.emplace_back();
        for (std::uint64_t column = 0; column < columns; ++column) {
            char* const value = text(&result, column, row);
            values.push_back(value != nullptr ? value : "NULL");
            functionOf<void(void*)>("duckdb_free")(value);
        }
    }
    functionOf<void(Result*)>("duckdb_destroy_result")(&result);
    require(state, error + " in " + statement);
    return answer;
}

std::string DuckDb::one(const std::string& statement) {
    return ask(statement).at(0).at(0);
}

void DuckDb::take(const std::string& name, ArrowArrayStream stream) {
    const std::string view = name + "_scanned";
    require(functionOf<int(void*, const char*, ArrowArrayStream*)>("duckdb_arrow_scan")(
                connection_, view.c_str(), &stream),
            "scan");
    ask("CREATE TABLE " + name + " AS SELECT * FROM " + view);
    ask("DROP VIEW " + view);
    if (stream.release != nullptr) stream.release(&stream);
}

std::unique_ptr<vekdb> DuckDb::tableOf(const std::string& statement, std::string& why) {
    auto answer = std::make_unique<ArrowAnswer>();
    require(functionOf<int(void*, const char*, void**)>("duckdb_query_arrow")(
                connection_, statement.c_str(), &answer->result),
            statement);
    ArrowArrayStream stream = {};
    stream.get_schema = ArrowAnswer::schema;
    stream.get_next = ArrowAnswer::next;
    stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
    stream.release = ArrowAnswer::release;
    stream.private_data = answer.release();
    LightweightString<char> told;
    auto table = importArrow(stream, &told);
    why = told.c_str();
    return table;
}
