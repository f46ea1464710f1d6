#include "cli/hostile_shapes.h"

#include <algorithm>
#include <string_view>

namespace {

using std::size_t;
using std::string;

string filled(string out, std::string_view with, size_t size) {
    while (out.size() < size) out += with;
    return out;
}

// Each made of its number.
template <class Make>
string counted(string out, size_t size, Make make) {
    for (size_t i = 0; out.size() < size; ++i) out += make(std::to_string(i));
    return out;
}

string withoutComma(string text) {
    if (text.ends_with(',')) text.pop_back();
    return text;
}

string names(size_t count, const string& of, const string& mark) {
    string out;
    for (size_t i = 0; i < count; ++i) out += (i == 0 ? "" : mark) + of + std::to_string(i);
    return out;
}

size_t columnsIn(size_t size) {
    return std::min<size_t>(65535, size / 10);
}

// A text of 16 bits a character, the lower byte first, with its mark.
string wide(const string& text) {
    string out = "\xff\xfe";
    for (char c : text) {
        out += c;
        out += '\0';
    }
    return out;
}

const string table = "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"a\",\"b\"\n";
const string editList = "TITLE: x\nFCM: NON-DROP FRAME\n";
const string event = "001  AX V C 01:00:00:00 01:00:01:00 02:00:00:00 02:00:01:00\n";
const string clip =
    "{\"OTIO_SCHEMA\":\"Clip.1\",\"name\":\"a\",\"source_range\":{\"start_time\":{\"rate\":24,"
    "\"value\":1},\"duration\":{\"rate\":24,\"value\":1}}}";

string timeline(const string& children) {
    return "{\"OTIO_SCHEMA\":\"Timeline.1\",\"tracks\":{\"OTIO_SCHEMA\":\"Stack.1\",\"children\":"
           "[{\"OTIO_SCHEMA\":\"Track.1\",\"kind\":\"Video\",\"children\":[" +
           children + "]}]}}";
}

string clips(const string& spine) {
    return "<?xml version=\"1.0\"?><!DOCTYPE fcpxml><fcpxml version=\"1.9\"><resources><format "
           "id=\"r1\" frameDuration=\"1/25s\"/><asset id=\"r2\" name=\"V\" start=\"0s\" "
           "duration=\"10s\" format=\"r1\"/></resources><library><event name=\"e\"><project "
           "name=\"p\"><sequence format=\"r1\" tcStart=\"0s\"><spine>" +
           spine + "</spine></sequence></project></event></library></fcpxml>";
}

// One in another, as often as there is room.
string nested(const string& begin, const string& inner, const string& end, size_t size) {
    const size_t depth = size / (begin.size() + end.size());
    string out = filled("", begin, depth * begin.size()) + inner;
    for (size_t i = 0; i < depth; ++i) out += end;
    return out;
}

const std::vector<HostileShape> delimitedShapes = {
    {"cells.csv", "a", [](size_t n) { return filled("a\n", "1\n", n); }},
    {"pairs.csv", "a", [](size_t n) { return filled("a,b\n", "1,2\n", n); }},
    {"short.csv", "a", [](size_t n) { return filled("a,b\n", "1\n", n); }},
    {"ragged.csv", "a",
     [](size_t n) {
         return counted("a,b\n", n, [](const string& i) {
             return "1" + filled("", ",2", static_cast<size_t>(i.back() - '0') * 2) + "\n";
         });
     }},
    {"values.csv", "a",
     [](size_t n) { return counted("a,b\n", n, [](const string& i) { return i + "x,1\n"; }); }},
    {"values.tsv", "a",
     [](size_t n) { return counted("a\tb\n", n, [](const string& i) { return i + "x\t1\n"; }); }},
    {"texts.csv", "b",
     [](size_t n) {
         return counted("a,b\n", n, [](const string& i) { return "\"x\ny\"," + i + "\n"; });
     }},
    {"same.csv", "a", [](size_t n) { return filled("a,b\n", "the same,1\n", n); }},
    {"wide.csv", "c0",
     [](size_t n) { return filled(names(columnsIn(n), "c", ",") + "\n", "1,", n) + "\n"; }},
    {"wide_short.csv", "c0",
     [](size_t n) { return filled(names(columnsIn(n), "c", ",") + "\n", "1\n", n); }},
    {"equal.csv", "x#1",
     [](size_t n) { return filled("x", ",x", 2 * columnsIn(n)) + filled("\n", "1\n", n / 8); }},
    {"long_row.csv", "a",
     [](size_t n) {
         return filled("a\n", "1\n", n / 4) + filled("", "x,", 2 * columnsIn(n)) + "\n";
     }},
    {"long_cell.csv", "b",
     [](size_t n) { return filled("a,b\n" + string(n / 2, 'x') + ",y\n", "1,2\n", n); }},
    {"long_name.csv", "b",
     [](size_t n) { return filled(string(n / 2, 'n') + ",b\n", "1,2\n", n); }},
    {"open_quote.csv", "a", [](size_t n) { return filled("a,b\n\"", "1,2\n", n); }},
    {"quotes.csv", "a", [](size_t n) { return filled("a,b\n", "\"", n); }},
    {"quoted.csv", "a", [](size_t n) { return filled("a,b\n", "\"\"\"\",\"\"\n", n); }},
    {"returns.csv", "a", [](size_t n) { return filled("a,b\r", "1,2\r", n); }},
    {"zeros.csv", "a", [](size_t n) { return string(n, '\0'); }},
    {"some_zeros.csv", "a", [](size_t n) { return filled("a,b\n", string("1,\0\n", 4), n); }},
    {"blank.csv", "a", [](size_t n) { return filled("a,b\n", "\n", n); }},
    {"blank_cells.csv", "a", [](size_t n) { return filled("a\n", "\n", n); }},
    {"commas.csv", "a", [](size_t n) { return filled("a,b\n", ",", n); }},
    {"spaces.csv", "a", [](size_t n) { return string(n, ' '); }},
    {"tabs.tsv", "a", [](size_t n) { return filled("a\tb\n", "\t\n", n); }},
    {"marks.csv", "a", [](size_t n) { return filled("a;b|c\td\n", "1;2|3\t4\n", n); }},
    {"codes.csv", "Start",
     [](size_t n) { return filled("Start,End\n", "01:00:09:00,01:00:01:00\n", n); }},
    {"keycodes.csv", "a", [](size_t n) { return filled("a\n", "KJ 12 3456-7890+12\n", n); }},
    {"utf16.csv", "a", [](size_t n) { return wide(filled("a,b\n", "1,2\n", n / 2)); }},
    {"half.csv", "a", [](size_t n) { return filled("\xff\xfe", string("\xd8\0", 2), n); }},
    {"latin.csv", "a", [](size_t n) { return filled("a,b\n", "caf\xe9,2\n", n); }},
    {"no_text.csv", "a", [](size_t n) { return filled("a,b\n", "\xff\xfe\x81,2\n", n); }},
};

const std::vector<HostileShape> jsonShapes = {
    {"deep.json", "a", [](size_t n) { return string(n, '['); }},
    {"deep_cell.json", "a", [](size_t n) { return "[{\"a\":" + nested("[", "", "]", n) + "}]"; }},
    {"deep_object.json", "a",
     [](size_t n) { return "[{\"a\":" + nested("{\"a\":", "1", "}", n) + "}]"; }},
    {"keys.jsonl", "k0",
     [](size_t n) {
         return counted("", n, [](const string& i) { return "{\"k" + i + "\":\"1\"}\n"; });
     }},
    {"one_object.json", "k0",
     [](size_t n) {
         return withoutComma(
                    counted("[{", n, [](const string& i) { return "\"k" + i + "\":1,"; })) +
                "}]";
     }},
    {"one_key.json", "k",
     [](size_t n) { return withoutComma(filled("[{", "\"k\":1,", n)) + "}]"; }},
    {"values.jsonl", "a",
     [](size_t n) {
         return counted("", n, [](const string& i) { return "{\"a\":\"" + i + "x\",\"b\":1}\n"; });
     }},
    {"empty.jsonl", "a", [](size_t n) { return filled("", "{}\n", n); }},
    {"rows.json", "a",
     [](size_t n) { return withoutComma(filled("[", "{\"a\":1,\"b\":\"x\"},", n)) + "]"; }},
    {"escapes.json", "a", [](size_t n) { return filled("[{\"a\":\"", "\\u0000", n) + "\"}]"; }},
    {"number.json", "a", [](size_t n) { return "[{\"a\":" + string(n, '1') + "}]"; }},
    {"long_name.jsonl", "a",
     [](size_t n) { return filled("{\"" + string(n / 2, 'k') + "\":1}\n", "{\"a\":1}\n", n); }},
    {"braces.jsonl", "a", [](size_t n) { return string(n, '{'); }},
};

const std::vector<HostileShape> listShapes = {
    {"events.edl", "Reel", [](size_t n) { return filled(editList, event, n); }},
    {"values.edl", "Reel",
     [](size_t n) {
         return counted(editList, n, [](const string& i) {
             return "001  R" + i + " V C 01:00:00:00 01:00:01:00 02:00:00:00 02:00:01:00\n";
         });
     }},
    {"comments.edl", "Reel", [](size_t n) { return filled(editList + event, "* x\n", n); }},
    {"no_events.edl", "Reel", [](size_t n) { return filled(editList, "* x\n", n); }},
    {"odd.edl", "Reel", [](size_t n) { return filled(editList + event, "1 A V C\n", n); }},
    {"splits.edl", "Reel", [](size_t n) { return filled(editList, "SPLIT: A\n", n) + event; }},
    {"counting.edl", "Reel",
     [](size_t n) { return filled(editList, event + "FCM: DROP FRAME\n", n); }},
    {"long_comment.edl", "Reel",
     [](size_t n) { return editList + event + "* " + string(n, '\\') + "\n"; }},
    {"titles.edl", "Reel", [](size_t n) { return filled("", "TITLE: x\n", n); }},
    {"rows.ale", "Name",
     [](size_t n) { return filled("Heading\nFPS\t24\n\nColumn\nName\n\nData\n", "a\n", n); }},
    {"values.ale", "Name",
     [](size_t n) {
         return counted("Heading\nFPS\t24\n\nColumn\nName\n\nData\n", n,
                        [](const string& i) { return i + "x\n"; });
     }},
    {"heading.ale", "Name",
     [](size_t n) {
         return counted("Heading\n", n, [](const string& i) { return "k" + i + "\tv\n"; }) +
                "Column\nName\n\nData\nx\n";
     }},
    {"heading_only.ale", "Name", [](size_t n) { return filled("Heading\n", "A\tb\n", n); }},
    {"entries.ale", "Name",
     [](size_t n) { return filled("Heading\n", "A\tb\t", n) + "\nColumn\nName\n\nData\nx\n"; }},
    {"columns.ale", "c0",
     [](size_t n) {
         return filled("Heading\nColumn\n" + names(columnsIn(n), "c", "\t") + "\nData\n", "1\n", n);
     }},
};

const std::vector<HostileShape> tableShapes = {
    {"rows.vek", "a", [](size_t n) { return filled(table, "\"x\",\"1\"\n", n); }},
    {"values.vek", "a",
     [](size_t n) {
         return counted(table, n, [](const string& i) { return "\"" + i + "x\",\"1\"\n"; });
     }},
    {"short_values.vek", "a",
     [](size_t n) { return counted(table, n, [](const string& i) { return i + "x\n"; }); }},
    {"notes.vek", "a",
     [](size_t n) {
         return counted("\"VEKDB:Rev 1\"\n\"vek exact cells:1:2=1%20;3:2=1%20;\"\n" +
                            table.substr(table.find('\n') + 1),
                        n, [](const string& i) { return "\"" + i + "x\",\"1\"\n"; });
     }},
    {"codes.vek", "Start",
     [](size_t n) {
         return filled("\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\"\n\"timecode\"\n\"Start\"\n", "x\n", n);
     }},
    {"items.vek", "Cookie",
     [](size_t n) {
         return counted(
             "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"38\"\n\"text\"\n\"Cookie\"\n", n,
             [](const string& i) { return "\"" + string(38 - i.size(), '0') + i + "\"\n"; });
     }},
    {"plain.vek", "a", [](size_t n) { return filled(table, "x\n", n); }},
    {"long_row.vek", "a",
     [](size_t n) {
         return filled(table, "\"1\"\n", n / 4) + filled("", "x,", 2 * columnsIn(n)) + "x\n";
     }},
    {"parameters.vek", "a",
     [](size_t n) {
         return counted("\"VEKDB:Rev 1\"\n", n,
                        [](const string& i) { return "\"p" + i + ":1\"\n"; }) +
                table.substr(table.find('\n') + 1) + "\"x\"\n";
     }},
    {"quotes.vek", "a", [](size_t n) { return filled(table, "\"", n); }},
    {"blank.vek", "a", [](size_t n) { return filled(table, "\n", n); }},
    {"zeros.vek", "a", [](size_t n) { return table + string(n, '\0'); }},
    {"long_cell.vek", "a", [](size_t n) { return table + "\"" + string(n, 'x') + "\"\n"; }},
    {"commas.vek", "a", [](size_t n) { return filled(table, ",", n); }},
    {"magic.vek", "a", [](size_t n) { return filled(table, "\"VEKDB\"\n", n); }},
    {"magics.vek", "a", [](size_t n) { return filled("", "\"VEKDB:Rev 1\"\n", n); }},
};

const std::vector<HostileShape> timelineShapes = {
    {"clips.otio", "Clip Name",
     [](size_t n) { return timeline(withoutComma(filled("", clip + ",", n))); }},
    {"nested.otio", "Clip Name",
     [](size_t n) {
         return timeline(nested("{\"OTIO_SCHEMA\":\"Stack.1\",\"children\":[", clip, "]}", n));
     }},
    {"values.otio", "Clip Name",
     [](size_t n) {
         return timeline(withoutComma(counted("", n, [](const string& i) {
             return "{\"OTIO_SCHEMA\":\"Clip.1\",\"name\":\"" + i + "\"},";
         })));
     }},
    {"markers.otio", "Clip Name",
     [](size_t n) {
         return timeline("{\"OTIO_SCHEMA\":\"Clip.1\",\"markers\":[" +
                         withoutComma(filled("", "{\"OTIO_SCHEMA\":\"Marker.2\"},", n)) + "]}");
     }},
    {"metadata.otio", "Clip Name",
     [](size_t n) {
         return timeline(withoutComma(counted("", n, [](const string& i) {
             return "{\"OTIO_SCHEMA\":\"Clip.1\",\"metadata\":{\"k" + i + "\":1}},";
         })));
     }},
    {"clips.fcpxml", "Clip Name",
     [](size_t n) {
         return clips(filled("", "<asset-clip ref=\"r2\" offset=\"0s\" duration=\"1s\"/>", n));
     }},
    {"nested.fcpxml", "Clip Name",
     [](size_t n) { return clips(nested("<clip name=\"a\" duration=\"1s\">", "", "</clip>", n)); }},
    {"markers.fcpxml", "Clip Name",
     [](size_t n) {
         return clips("<asset-clip ref=\"r2\" duration=\"1s\">" +
                      filled("", "<marker start=\"0s\" value=\"x\"/>", n) + "</asset-clip>");
     }},
    {"attributes.fcpxml", "Clip Name",
     [](size_t n) {
         return clips(
             counted("<asset-clip ", n, [](const string& i) { return "a" + i + "=\"1\" "; }) +
             "/>");
     }},
    {"entities.fcpxml", "Clip Name",
     [](size_t n) {
         return filled(
                    "<?xml version=\"1.0\"?><!DOCTYPE fcpxml [<!ENTITY a \"aaaaaaaaaa\">"
                    "<!ENTITY b \"&a;&a;&a;&a;&a;&a;\">]><fcpxml version=\"1.9\">",
                    "&b;", n) +
                "</fcpxml>";
     }},
};

}  // namespace

const std::vector<HostileShape>& hostileShapes() {
    static const std::vector<HostileShape> all = [] {
        std::vector<HostileShape> out;
        for (const auto* some :
             {&delimitedShapes, &jsonShapes, &listShapes, &tableShapes, &timelineShapes}) {
            out.insert(out.end(), some->begin(), some->end());
        }
        return out;
    }();
    return all;
}
