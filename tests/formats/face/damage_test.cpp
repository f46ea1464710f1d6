// Logs of every format that is read, damaged in every place: cut off, and each byte flipped, made
// zero, set, taken away and doubled. Reading them ends soon, with a log or with a reason, takes no
// more memory than a text of its size may, and what is wrong is told with a line that is there.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include <vekdb/formats/log.h>
#include "testing/quiet.h"

namespace {

using testing_support::Quiet;
using vek::Format;
using vek::Log;

constexpr const char* csv =
    "Name,Take,Start,End,Notes\n"
    "A001,1,01:00:00:00,01:00:10:00,\"a \"\"quoted\"\" one\"\n"
    "\xC3\x84rger,2,01:00:10:00,01:00:20:00,\"two\nlines\"\n"
    "A003,10,,,see the notes\n";

struct Sample {
    Format format;
    std::string text;
};

std::vector<Sample> samples() {
    std::vector<Sample> made = {{Format::plainCsv, csv}};
    const Log log = *vek::openText(csv, "day.csv");
    vek::SaveOptions options;
    options.rate = "25";
    for (Format format : {Format::table, Format::csv, Format::tsv, Format::json, Format::jsonl,
                          Format::ale, Format::edl, Format::otio}) {
        made.push_back({format, ""});
        EXPECT_TRUE(log.write(made.back().text, format, options)) << nameOf(format);
    }
    made.push_back({Format::fcpxml,
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"
                    "<fcpxml version=\"1.9\"><resources>\n<format id=\"r1\" "
                    "frameDuration=\"1/25s\"/>\n<asset id=\"r2\" name=\"A001\" start=\"0s\" "
                    "duration=\"10s\" format=\"r1\"/></resources>\n<library><event><project "
                    "name=\"p\"><sequence format=\"r1\"><spine>\n<asset-clip ref=\"r2\" "
                    "name=\"A\" offset=\"0s\" start=\"1s\" duration=\"2s\"/>\n"
                    "</spine></sequence></project></event></library></fcpxml>\n"});
    return made;
}

std::size_t linesOf(const std::string& text) {
    return 1 + static_cast<std::size_t>(std::count_if(
                   text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }));
}

// What is missing at the end is expected on the line behind the last.
void expectLineOfText(std::size_t line, const std::string& text) {
    EXPECT_LE(line, linesOf(text) + 1) << text;
}

// All that a person or a program looks at.
void lookAt(const Log& log, const std::string& text) {
    for (const vek::Problem& problem : log.problems()) {
        expectLineOfText(problem.line, text);
        EXPECT_FALSE(problem.text("log").empty());
    }
    std::size_t bytes = 0;
    for (vek::Row row : log) {
        expectLineOfText(row.line(), text);
        for (std::string_view cell : row) bytes += cell.size();
    }
    // A cell that stands in a text takes no more bytes than the text; names may stand in many rows.
    EXPECT_LE(bytes, (text.size() + 64) * (log.size() + 1));
}

class Damage : public testing::Test {
protected:
    static void TearDownTestSuite() {
        std::printf("%u damaged logs of %u formats\n", logs_, formats_);
    }

    void read(Format format, const std::string& text) {
        ++logs_;
        vek::OpenOptions options;
        options.format = format;
        const std::clock_t start = std::clock();
        const auto log = vek::openText(text, "log", options);
        // Texts of some hundred bytes, of which each takes a thousandth of that.
        EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC) << text;
        if (log) return lookAt(*log, text);
        EXPECT_FALSE(log.reason().text().empty());
        expectLineOfText(log.reason().line, text);
        EXPECT_NE(log.reason().kind, vek::Reason::outOfMemory);
    }

    // Each of them is damaged in this way in each place, or in some where there is no time.
    template <class Way>
    void damage(Way way) {
        static const bool isWholeRun = std::getenv("VEKDB_TEST_WHOLE") != nullptr;
        formats_ = 0;
        for (const Sample& sample : samples()) {
            ++formats_;
            for (std::size_t at = 0; at <= sample.text.size(); at += isWholeRun ? 1 : 5) {
                std::string text = sample.text;
                way(text, at);
                read(sample.format, text);
                ASSERT_FALSE(HasFailure()) << nameOf(sample.format) << ", byte " << at;
            }
        }
    }

    static inline unsigned logs_ = 0;
    static inline unsigned formats_ = 0;
    const Quiet quiet_;
};

TEST_F(Damage, ByALossOfTheEndIsReadOrRefused) {
    damage([](std::string& text, std::size_t at) { text.resize(at); });
}

TEST_F(Damage, ByFlippedBitsIsReadOrRefused) {
    for (int bit : {0, 1, 5, 7}) {
        damage([bit](std::string& text, std::size_t at) {
            if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << bit));
        });
    }
}

TEST_F(Damage, ByOtherBytesIsReadOrRefused) {
    for (char byte : {'\0', '\xff', '"', '\n', '\t', ',', '0', '<', '\\'}) {
        damage([byte](std::string& text, std::size_t at) {
            if (at < text.size()) text[at] = byte;
        });
    }
}

TEST_F(Damage, ByALostByteIsReadOrRefused) {
    damage([](std::string& text, std::size_t at) { text.erase(std::min(at, text.size()), 1); });
}

TEST_F(Damage, ByADoubledByteIsReadOrRefused) {
    damage([](std::string& text, std::size_t at) {
        if (at < text.size()) text.insert(at, 1, text[at]);
    });
}

TEST_F(Damage, ByADoubledPartIsReadOrRefused) {
    damage([](std::string& text, std::size_t at) {
        text.insert(std::min(at, text.size()), text.substr(at / 2, 40));
    });
}

}  // namespace
