// A program to be looked at by gdb: with all types of the library's inside known to it, as where
// the library was built with debug information, or without.

#include <memory>

#include <vekdb/host/text_block.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/field_map.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#ifdef SHOWS_INSIDE
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_strings.h"
#include "vekdb/table/table_parts.h"
#include "views/deferred_removals.h"
#include "views/view_parts.h"
#endif

namespace {

// Something to stop at, with all of it in reach.
[[gnu::noinline]] void lookHere(const vekdb& table, const dbrecord& loaded, const dbrecord& patched,
                                const dbrecord& own, const VDBView& view, const VDBView& upper,
                                const FieldMap& fields) {
    asm volatile("" ::"r"(&table), "r"(&loaded), "r"(&patched), "r"(&own), "r"(&view), "r"(&upper),
                 "r"(&fields));
}

}  // namespace

int main(int, char** arguments) {
    const LightweightString<char> text("said \"cut\"\n");
    const LightweightString<char> none;
    const LightweightString<wchar_t> wide(L"caf\u00E9");
    const Quor::Ptr<TextBlock> share = TextBlock::create(4);
    const Quor::Ptr<TextBlock> second = share;

    vekdb table(fromUTF8(arguments[1]), 1000, true);
    table.set_field(1, table.get_fieldnum("Notes"), "a longer note than was there");
    table.set_tag(2, 7);
    table.delete_records(3, 1);

    const std::unique_ptr<dbrecord> own(table.make_dummy_record());
    own->set_field(0, "A001");

    const VDBView view(&table);
    view->displayAllRecords();
    view->set_tag(1, 1);
    view->remove(0, 1);
    const VDBView upper(view->newTagSubview());
    const VDBView nothing;
    FieldMap fields(view);
    fields.setVisible(1, false);

    lookHere(table, *table.get_record(0), *table.get_record(1), *own, view, upper, fields);
    return nothing ? 1 : 0;
}
