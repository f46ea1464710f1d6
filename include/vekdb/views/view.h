#pragma once

#include <cstddef>

#include <vekdb/host/visibility.h>

class VDBViewRep;
class vekdb;

/// The handle that applications hold a view by. Handles on one view share it through the count
/// inside the view, which the views stacked on it share too; the last of them destroys it.
///
/// A null handle has no view; its operations answer with null handles. Handles keep neither
/// the table nor the records alive. Not locked: a table, its views and their handles are used
/// from one thread at a time.
class VEKDB_PUBLIC VDBView {
public:
    /// A null handle.
    VDBView() noexcept = default;
    VDBView(std::nullptr_t) noexcept {}

    /// A new view over the table, with all its columns and, as yet, no rows.
    VDBView(vekdb* table);

    /// Shares a view that exists, such as one from `newTagSubview`. Null gives a null handle.
    explicit VDBView(VDBViewRep* view) noexcept;

    /// Shares the other's view, or takes its share over.
    VDBView(const VDBView& other) noexcept;
    VDBView(VDBView&& other) noexcept;
    ~VDBView();

    /// Shares the other's view before it lets go of its own.
    VDBView& operator=(const VDBView& other) noexcept;

    /// The view, null for none; the last two of these need one.
    VDBViewRep* get() const noexcept { return view_; }
    explicit operator bool() const noexcept { return view_ != nullptr; }
    VDBViewRep* operator->() const noexcept { return view_; }
    VDBViewRep& operator*() const noexcept { return *view_; }

    /// A second view of the same rows; see `VDBViewRep::copy`. A null handle where there is
    /// no view, or the view has no table.
    VDBView copy() const;

    /// A view of the same rows over a copy of the table; see
    /// `VDBViewRep::copyWithNewBaseView`. The new table, reached through `table()` of the new
    /// view, is the caller's to delete after the last handle went.
    VDBView copyWithNewBaseView() const;

private:
    VDBViewRep* view_ = nullptr;
};

/// A new table with the columns and parameters of the view's table and copies of the view's
/// records, in the view's order; neither the view's tags nor the records' are carried. The
/// caller owns it. Null where there is no view, the view has no table, or rows cannot be added.
VEKDB_PUBLIC vekdb* Convert_VDBView_to_vekdb(VDBView view);
