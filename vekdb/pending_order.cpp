// Sorting, lookup, query and merging answer "nothing found" until they land.
#include "vekdb/table.h"
#include "vekdb/table_parts_impl.h"

void vekdb::set_sortfield(int field) { parts().sort.sortBy(field); }
void vekdb::set_sortfields(int* fields) { parts().sort.sortBy(fields); }
void vekdb::set_sort_offset(int offset) { parts().sort.setOffset(offset); }
int* vekdb::sortPrepare(int, int) { return parts().sort.columns(); }
void vekdb::sort(int, int) {}
unsigned vekdb::findFirst(const char*, const char*, int) { return 0xFFFFFFFF; }
unsigned vekdb::getRowIndexByID(const Cookie&) { return 0xFFFFFFFF; }
void vekdb::set_query(dbrecord*) {}
void vekdb::setQuery(const std::vector<TextSearch::Criteria>&) {}
unsigned vekdb::tag_matching_records(int) { return 0; }
unsigned vekdb::match_record(int) const { return 0xFFFFFFFF; }
int vekdb::match_field(dbrecord*, int) const { return 0; }
int vekdb::matchField(const dbrecord*, unsigned short, const TextSearch::Criteria&) const {
    return 0;
}
int vekdb::found_in_special_label_field(dbrecord*, int) const { return 0; }
int vekdb::merge_all_matching(VDBBase*) { return 0; }
unsigned vekdb::add_vekdb(vekdb*) { return 0xFFFFFFFF; }
unsigned vekdb::tag_all_different(int) { return 0; }
