// Decompresses a gzip stream, see inflater.h.
#include "inflater.h"

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

Inflater::Inflater(Read read) : read_(std::move(read)) {
    constexpr int gzip_only = 16;
    if (inflateInit2(&stream_, MAX_WBITS + gzip_only) != Z_OK)
        throw std::bad_alloc();
}

std::size_t Inflater::read(char *bytes, std::size_t size) {
    stream_.next_out = reinterpret_cast<Bytef *>(bytes);
    stream_.avail_out = static_cast<uInt>(size);
    while (stream_.avail_out == size) {
        if (stream_.avail_in == 0) {
            stream_.next_in = reinterpret_cast<Bytef *>(input_.data());
            stream_.avail_in = static_cast<uInt>(read_(input_.data(), input_.size()));
        }
        if (stream_.avail_in == 0)
            return 0;
        if (is_over_)
            inflateReset(&stream_);
        const int result = inflate(&stream_, Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END)
            throw std::system_error(EBADMSG, std::generic_category());
        is_over_ = result == Z_STREAM_END;
    }
    return size - stream_.avail_out;
}
