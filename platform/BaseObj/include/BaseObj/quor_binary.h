#pragma once

/// A byte buffer: `length` bytes at `data`, without a terminating NUL. Whether the bytes are owned is said
/// where a record is handed over. The order of the fields is fixed.
struct quor_binary {
    int length = 0;
    char* data = nullptr;
};
