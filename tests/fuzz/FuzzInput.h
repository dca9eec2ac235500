#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// What every target defines: one run with any bytes. The result is always 0; a fault ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// What a target gets from the fuzzer; the bytes live as long as the run.
inline QByteArray fuzzInput(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<int>(size)};
}

/// What must hold of every input; the fuzzer takes the end of the process for a crash and keeps the input.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
