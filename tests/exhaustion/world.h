#pragma once

#include <memory>
#include <string>
#include <vector>

#include <vekdb/container/container_file.h>
#include <vekdb/host/assoc_list.h>
#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/grow_string.h>
#include <vekdb/table.h>
#include <vekdb/views/cursor.h>
#include <vekdb/views/field_map.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "testing/temp_dir.h"

namespace exhaustion {

/// How a world comes to be: in memory, or loaded from a file, where records stand on its text.
enum class Kind { made, loaded, taggedShown };

/// Where a world's files stand; one for all worlds of a program.
const testing_support::TempDir& folder();

Cookie cookieOf(unsigned number);

/// One of everything that an operation can be called on, small and always the same. Nobody
/// operates on the bystander, a view of all rows, so what it shows tells whether views follow.
struct World {
    World(Kind kind, unsigned rows);

    std::unique_ptr<vekdb> table;
    std::unique_ptr<vekdb> other;  // of the same columns
    VDBView bystander;
    VDBView above;  // all of the bystander
    VDBView view;   // rows of the table in another order, one of them twice
    VDBView upper;  // all of `view`
    VDBView top;    // all of `upper`
    VDBViewCursor cursor;
    FieldMap map;
    dbrecord record;
    CookieVec list;
    CookieSet set;
    AssocList params;
    GrowString text;
    std::unique_ptr<QuorContainerFile::Writer> writer;
    std::unique_ptr<QuorContainerFile::Reader> reader;
};

/// What is out of order in a world; empty when everything fits together.
std::string faultsOf(const World& world);
/// Everything that can be seen of a world but the room that it takes.
std::string pictureOf(World& world);
/// The records that a source shows.
std::vector<const dbrecord*> shownBy(const VDBBase& source);

}  // namespace exhaustion
