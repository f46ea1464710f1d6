#pragma once

#include <vekdb/host/visibility.h>

/// What the record comparison goes by, shared by all tables of the process: `sortPrepare` of a
/// table fills it in, and a sort uses it until it is done. So only one sort may run at a time,
/// and the comparison routines may only be called behind a `sortPrepare` whose table still has
/// the columns and the sort list that it had then.

/// The columns to compare by, in order, ended by the first negative entry. Belongs to the table
/// or to whoever gave the list to `set_sortfields`.
extern VEKDB_PUBLIC int* cmp_fields;
/// How many comparisons were made since the last `sortPrepare`. Keys that a sort prepares count as
/// one for each row but the first, and each tie between keys that had to be decided as one more.
extern VEKDB_PUBLIC int comco;
/// Where in a value the comparison begins: so many characters from its front, or, when negative,
/// from its end.
extern VEKDB_PUBLIC int s_off;
/// Non-zero for plain comparison without regard to case instead of the people's order.
extern VEKDB_PUBLIC int force_normal_sort;
/// The column that is compared as timecode, or -1.
extern VEKDB_PUBLIC int timecode_field;

/// Compares two records in ascending order; the arguments point at `dbrecord*`. Blank records and
/// empty values come last, and two empty values end the comparison: the columns behind them
/// decide nothing. Missing values are empty.
VEKDB_PUBLIC int dbr_cmp(const void* a, const void* b);

/// Compares two records in descending order, by nothing but their values without regard to case:
/// no rule for blanks, empty values, white space, timecode or the offset.
VEKDB_PUBLIC int dbr_backcmp(const void* a, const void* b);
