// The program without SQLite.
#include "tools/vek/sql/engine.h"

namespace vek::sql {

Answer run(std::vector<NamedLog>, const std::string&, const Wishes&) {
    throw formats::Failure{formats::wrongUsage,
                           "sql: this vek was built without SQLite; vek show --where asks a log"};
}

}  // namespace vek::sql
