// Makes a log, saves it, and meets what can go wrong.
// usage: save_safely FOLDER

#include <cstdio>
#include <string>

#include <vekdb/field_types.h>
#include <vekdb/host/diagnostics.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

namespace {

// What the library has to say to developers goes where the application wants it.
class Messages final : public iDiagnosticSink {
public:
    void debug(const char* text) noexcept override { std::printf("debug: %s", text); }
    void log(const char* text) noexcept override { std::printf("log: %s", text); }
    void splat(const char* text) noexcept override { std::printf("splat: %s", text); }
};

bool save(vekdb& log, const std::string& path) {
    log.set_filename(fromUTF8(path.c_str()));
    const int rows = log.save_text();
    std::printf("%s: %d rows\n", path.c_str(), rows);
    return rows > 0;
}

// Why a table is not what it should be.
void explain(const vekdb& log) {
    dberror error;
    if (log.get_read_error() != 0) {
        std::printf("cannot be read: error %d\n", log.get_read_error());
    } else if (log.read_error_info(error)) {
        std::printf("row %d has %s\n", error.values[1] + 1, "another number of values");
    } else if (!log.get_valid()) {
        std::printf("is no log\n");
    } else {
        std::printf("%u rows, %s\n", log.get_num_records(),
                    log.get_loaded_whole() ? "all there" : "some are missing");
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const std::string folder = arguments[1];
    static Messages messages;
    setDiagnosticSink(&messages);

    vekdb log({{"Scene", DBFieldTypes::text}, {"Take", DBFieldTypes::long_integer}});
    log.add_param("Project", "Night shoot");  // a file without any parameter does not load
    log.add_records(2);
    log.set_field(0, 0, "12");
    log.set_field(0, 1, 1);
    log.set_field(1, 0, "12A");
    log.set_field(1, 1, 2);
    save(log, folder + "/takes.vek");
    save(log, folder + "/nowhere/takes.vek");

    explain(vekdb(fromUTF8((folder + "/takes.vek").c_str()), 1'000'000, true));
    explain(vekdb(fromUTF8((folder + "/missing.vek").c_str()), 1'000'000, true));

    log.addField({"Notes", DBFieldTypes::text});
    log.set_field(1, 2, std::string(5000, 'x').c_str());
    save(log, folder + "/long.vek");
    explain(vekdb(fromUTF8((folder + "/long.vek").c_str()), 1'000'000, true));
}
