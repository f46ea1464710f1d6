#pragma once

#include <vekdb/host/ptr.h>
#include <vekdb/host/visibility.h>

#include <utility>

/// A plain value made into a shared object, so that a notice can carry it. A
/// listener finds it with dynamic_cast<WrappedData<T>*> on the notice's object.
template <class T>
class VEKDB_PUBLIC WrappedData final : public iObject {
public:
    /// Takes the value over.
    explicit WrappedData(T data) : data_(std::move(data)) {}

    /// Lives as long as this object.
    const T& data() const noexcept { return data_; }

private:
    T data_;
};
