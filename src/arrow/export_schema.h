#pragma once

#include <vekdb/arrow/arrow.h>
#include "arrow/picture.h"

/// Whether the columns of what is handed over are large, their places in 64 bits.
bool hasLargeTexts(const ArrowExport& how);

/// Fills the schema in, whose release frees it. Throws where memory ends, and leaves it alone.
void makeSchema(const ArrowPicture& picture, const ArrowExport& how, ArrowSchema& out);
