#pragma once

#include <cstddef>
#include <cstdint>

/// The reader of one of the formats of other programs on arbitrary bytes. A file that is refused
/// gets a message. What was read can be written in the same format, or in the native XML format
/// where that refuses the kinds of nodes, can be read again without a failure, and then gives the
/// same bytes.
int FuzzForeignFormat(const std::uint8_t* data, std::size_t size, int format);
