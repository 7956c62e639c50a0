// Writing and flushing of streams, in the one place that sees every failure.
//
// A program whose output was lost must not end as if all were well, so each failed write or flush
// is remembered until the exit path asks.
//
// Order: standard output is buffered as long as only listings are written, since a flush a line is
// what makes long listings slow. Before anything is written elsewhere it is flushed, so that a
// reader of both streams sees all lines in the order in which they were printed.
#pragma once

#include <cstdint>
#include <cstdio>

namespace messages {

// The stream that texts go to now; standard error if there is none.
std::FILE* outputStream();

// To be called before a text is written to `stream`.
void beginOutput(std::FILE* stream);

// To be called after a whole text was written to `stream`.
void endOutput(std::FILE* stream);

// Writes `length` bytes; the result is `length`, or negative on failure.
int64_t writeBytes(std::FILE* stream, const char* bytes, uint64_t length);

// Remembers that output to `stream` was lost, for the reason of the host's number `error`.
void noteLost(const std::FILE* stream, int error);

// Null streams are passed over.
void flushStream(std::FILE* stream);

// Closes a stream that has been flushed.
void closeStream(std::FILE* stream);

} // namespace messages
