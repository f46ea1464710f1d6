#pragma once

class RowChoice;
class TextFile;
class vekdb;
struct TableParts;

/// Fills an empty table from plain comma-separated text: names in the first line, a record in
/// each later one, at most `maxRecords`. With a choice only rows that it takes. Nothing is
/// unquoted or trimmed; every column is of type text_s. Missing values stay empty, those past the
/// last column are left out. The table is then valid and counts as unmodified.
void loadPlainCsv(const TextFile& file, vekdb& table, TableParts& parts, int maxRecords,
                  RowChoice* choice);
