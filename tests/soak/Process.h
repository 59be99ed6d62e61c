#pragma once

#include <cstddef>

/// What the soak measures of its own process.
namespace process {

/// Bytes that are allocated now, by whomever: the C library's own count.
std::size_t bytesInUse();

/// Files, pipes and sockets that are open now.
int openFiles();

} // namespace process
