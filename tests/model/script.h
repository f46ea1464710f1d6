#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// Scripts of operations, to be run against the library and the plain model alike. Every number
/// of a step is brought into reach when the step is run, so that a script stays meaningful when
/// steps are taken out of it.
namespace script {

enum class Op : int {
    // the table
    addRows,
    insertRows,
    deleteRows,
    deleteTaggedRows,
    setRowTag,
    invertRowTag,
    setAllRowTags,
    invertAllRowTags,
    showTagsOnly,
    setValue,
    setEqualValue,
    setCookie,
    copyRow,
    sortTable,
    sortField,
    sortFields,
    sortOffset,
    query,
    tagMatchingRows,
    tagAllDifferent,
    findFirst,
    rowByIdentity,
    beginUpdate,
    addToUpdate,
    endUpdate,
    addColumn,
    removeColumn,
    renameColumn,
    setType,
    parameter,
    clearChanged,
    rowNumbers,
    foreignNotice,
    copyTable,
    mergeTables,
    // which views and listeners there are
    newView,
    newStackedView,
    restack,
    rebind,
    dropView,
    copyView,
    tagSubview,
    copyWithNewBase,
    convert,
    listen,
    stopListening,
    tableGoes,
    // a view
    append,
    buildIndex,
    clearView,
    sizeIndex,
    viewParameter,
    parametersFrom,
    viewSetTag,
    viewInvertTag,
    tagAll,
    invertAllTags,
    tagMatches,
    tagDuplicatesOrdered,
    tagDuplicates,
    viewTagAllDifferent,
    tagBase,
    displayAt,
    displayMatch,
    displayCookies,
    displayCookieSet,
    displayTagged,
    displayAll,
    displayAllWithBaseTags,
    displayAllWithTagField,
    displayAllFrom,
    insertBlank,
    viewAddRecords,
    viewDelete,
    viewDeleteTagged,
    viewRemove,
    removeTagged,
    removeNonTagged,
    removeFromBase,
    viewDeleteTaggedRecords,
    viewShowTagsOnly,
    viewSort,
    viewSortField,
    viewQuery,
    viewSetValue,
    viewSetCookie,
    viewQuestions,
    count
};

struct Step {
    Op op;
    int who;
    int a;
    int b;
    int c;
};

struct Script {
    int rows = 0;
    std::vector<Step> steps;
};

struct Weight {
    Op op;
    int weight;
};

using Random = std::mt19937_64;

Script randomScript(Random& random, const std::vector<Weight>& weights, int rows, int steps);

/// One line that `fromText` reads back.
std::string asText(const Script& script);
Script fromText(const std::string& text);

/// The values that scripts store and look for: few, so that they meet.
const char* value(int choice);
const char* timecode(int choice);
const char* cookie(int choice);
const char* deletionText(int choice);
/// A value that suits a column of the tables that scripts run on.
const char* valueFor(unsigned column, int choice);

/// Columns of the tables that scripts run on.
std::vector<std::pair<std::string, unsigned>> columns();

}  // namespace script
