#pragma once

/// Whether a text that is saved waits for the disk, as it does for every application. Off only
/// where the writing alone is measured, and in tests that save thousands of times.
struct DiskFlush {
    static bool isOn;
};
