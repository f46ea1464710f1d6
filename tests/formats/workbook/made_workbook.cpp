#include "formats/workbook/made_workbook.h"

#include "formats/workbook/zip_archive.h"

std::string archiveOf(const std::vector<std::pair<std::string, std::string>>& entries) {
    vek::formats::ZipWriter zip("test");
    for (const auto& [name, text] : entries) {
        zip.begin(name);
        zip.write(text);
    }
    return zip.finish();
}

std::string MadeWorkbook::bytes() const {
    std::vector<std::pair<std::string, std::string>> entries = {
        {"_rels/.rels",
         "<Relationships><Relationship Id='a' Type='x/officeDocument' Target='/xl/book.xml'/>"
         "</Relationships>"}};
    std::string list;
    std::string relations =
        "<Relationship Id='t' Type='x/sharedStrings' Target='texts.xml'/>"
        "<Relationship Id='f' Type='x/styles' Target='../xl/styles.xml'/>";
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        list += "<sheet name='" + sheets[i].name + "' sheetId='" + number + "' r:id='r" + number +
                "' state='" + sheets[i].state + "'/>";
        relations += "<Relationship Id='r" + number + "' Type='x/worksheet' Target='sheets/" +
                     number + ".xml'/>";
        entries.push_back({"xl/sheets/" + number + ".xml",
                           "<x:worksheet xmlns:x='u'><x:sheetData>" + sheets[i].rows +
                               "</x:sheetData>" + sheets[i].behind + "</x:worksheet>"});
    }
    entries.push_back({"xl/book.xml", "<workbook xmlns:r='v'>" + properties + "<sheets>" + list +
                                          "</sheets></workbook>"});
    entries.push_back(
        {"xl/_rels/book.xml.rels", "<Relationships>" + relations + "</Relationships>"});
    entries.push_back({"xl/texts.xml", "<sst>" + shared + "</sst>"});
    entries.push_back({"xl/styles.xml", "<styleSheet><numFmts>" + formats +
                                            "</numFmts><cellStyleXfs><xf numFmtId='9'/>"
                                            "</cellStyleXfs><cellXfs>" +
                                            styles + "</cellXfs></styleSheet>"});
    return archiveOf(entries);
}

std::string workbookOf(std::string_view rows, std::string_view shared) {
    MadeWorkbook book{{{"One", std::string(rows)}}};
    book.shared = shared;
    return book.bytes();
}
