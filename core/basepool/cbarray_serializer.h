#pragma once

#include "basepool/cbarrayex.h"
#include "basepool/cbexception.h"
#include "basepool/cbstreamreadbinary.h"
#include "basepool/cbstreamwritebinary.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>

// Elements that the streams write as their raw bytes: trivially copyable types without stream
// operators of their own. Arrays of them are written and read as one block.
template <class T>
concept CbStreamsAsRawBytes =
    std::is_trivially_copyable_v<T> && !requires(CbStreamWriteBinary & stream, const T& value)
{
    operator<<(stream, value);
}
&&!requires(CbStreamReadBinary & stream, T& value)
{
    operator>>(stream, value);
};

// Stream form of CbArray / CbArrayEx: the element count through the stream's count writer, then
// every element in index order as the stream writes a T (nested arrays, strings and vectors work
// alike). The count 0xFFFFFFFF is reserved: a reader that meets it throws CbExceptionWrongFileVersion.
//
//     stream << points;            // Write(stream, points, stream.GetVersion())
//     input >> points;             // Read(input, points, input.GetVersion())
//
// Read gives the strong guarantee: a bad count marker, a truncated stream or a failing element
// throws and leaves the array exactly as it was. A count larger than the stream can hold is
// rejected before anything is allocated for it.
class CbArraySerializer
{
public:
    static constexpr std::uint32_t kInvalidCount = 0xFFFFFFFFu;

    template <class T, class TPolicy>
    static void Write(CbStreamWriteBinary& stream, const CbArrayEx<T, TPolicy>& array, unsigned int version)
    {
        const unsigned int count = array.GetCount();
        if (count == kInvalidCount)
            CB_THROW(CbExceptionPreconditionViolation, "CbArraySerializer::Write",
                     "an array of 0xFFFFFFFF elements cannot be written");
        stream.WriteCount(count, version);
        if constexpr (CbStreamsAsRawBytes<T>)
            stream.Write(array.GetData(), std::size_t(count) * sizeof(T));
        else
            for (const T& element : array)
                stream << element;
    }

    template <class T, class TPolicy>
    static void Read(CbStreamReadBinary& stream, CbArrayEx<T, TPolicy>& array, unsigned int version)
    {
        const std::uint32_t count = stream.ReadCount(version);
        if (count == kInvalidCount)
            CB_THROW(CbExceptionWrongFileVersion, "CbArraySerializer::Read", "array count marker 0xFFFFFFFF");
        CbArrayEx<T, TPolicy> read;
        if constexpr (CbStreamsAsRawBytes<T>)
        {
            const std::uint64_t bytes = std::uint64_t(count) * sizeof(T);
            if (bytes > stream.GetRemaining())
                CB_THROW(CbExceptionWrongFileVersion, "CbArraySerializer::Read",
                         "array of " + std::to_string(count) + " elements needs " + std::to_string(bytes) +
                             " bytes, " + std::to_string(stream.GetRemaining()) + " are left");
            read.SetCapacity(count);
            read.SetCount(count);
            stream.Read(read.GetData(), static_cast<std::size_t>(bytes));
        }
        else
        {
            // The size of an element in the stream is unknown, so the block grows while elements
            // arrive (up to exactly count) instead of trusting the count up front.
            for (std::uint32_t i = 0; i < count; ++i)
            {
                if (read.GetCount() == read.GetCapacity())
                    read.Reserve(std::min<std::uint32_t>(count, std::max(4096u, 2 * read.GetCapacity())));
                T element{};
                stream >> element;
                read.Add(std::move(element));
            }
        }
        commit(array, read);
    }

private:
    // Moves what was read into array: a count above the array's capacity takes over the block read
    // (of exactly count slots), a smaller one is copied into the array's own block.
    template <class T, class TPolicy>
    static void commit(CbArrayEx<T, TPolicy>& array, CbArrayEx<T, TPolicy>& read)
    {
        if (read.GetCount() > array.GetCapacity())
            array.Swap(read);
        else if constexpr (std::is_copy_assignable_v<T> && std::is_copy_constructible_v<T>)
            array = read;
        else
        {
            array.SetCount(0);
            for (T& element : read)
                array.Add(std::move(element));
        }
    }
};

template <class T, class TPolicy>
CbStreamWriteBinary& operator<<(CbStreamWriteBinary& stream, const CbArrayEx<T, TPolicy>& array)
{
    CbArraySerializer::Write(stream, array, stream.GetVersion());
    return stream;
}

template <class T, class TPolicy>
CbStreamReadBinary& operator>>(CbStreamReadBinary& stream, CbArrayEx<T, TPolicy>& array)
{
    CbArraySerializer::Read(stream, array, stream.GetVersion());
    return stream;
}
