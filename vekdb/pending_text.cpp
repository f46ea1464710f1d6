// Loading and saving answer "nothing" until they land.
#include "vekdb/record.h"
#include "vekdb/table.h"

int dbrecord::read(TextFile&) { return 0; }
int dbrecord::write(TextFile&) const { return 1; }
void vekdb::loadFromFile(int, bool) { free(); }
int vekdb::read_params(TextFile&, dbrecord&) { return 0; }
unsigned vekdb::add_text(TextFile&, int, int) { return 0; }
unsigned vekdb::load_text(int) { return 0; }
int vekdb::save_text() { return 0; }
int vekdb::save_tags() { return 0; }
int vekdb::save_text_without_header() { return 0; }
void vekdb::save_params(TextFile&) const {}
void vekdb::save_column_header(TextFile&, bool) const {}
