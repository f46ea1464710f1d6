#pragma once

#include <vekdb/host/os.h>

/// The host's own file service.
class PosixFileService final : public iFileService {
public:
    bool deleteFile(const LightweightString<wchar_t>& path) override;
    bool moveFile(const LightweightString<wchar_t>& from, const LightweightString<wchar_t>& to,
                  bool replace) override;
};
