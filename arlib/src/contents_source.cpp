#include "arlib/src/contents_source.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace arlib {
namespace {

constexpr size_t smallestWindow = size_t{4} << 10;
constexpr size_t largestWindow = size_t{256} << 10;

// What the host copies in the time that a call to it costs by itself. Where the views lie closer
// together than this, a larger window is cheaper than more calls.
constexpr size_t bytesWorthACall = size_t{4} << 10;

} // namespace

bool ContentsReader::close() {
    m_WindowUsed = 0;
    return m_File.close();
}

bool ContentsReader::moveWindow(uint64_t offset, size_t count) {
    const size_t distance = m_ViewsInWindow <= 1 ? bytesWorthACall : m_WindowUsed / m_ViewsInWindow;
    m_NextWindowSize = distance < bytesWorthACall ? std::min(m_NextWindowSize * 2, largestWindow)
                                                  : std::max(m_NextWindowSize / 2, smallestWindow);
    const size_t wanted = std::max(m_NextWindowSize, count);
    if (m_Window.size() < wanted) {
        m_Window.resize(wanted);
    }
    const int64_t got = m_File.readAt(m_Window.data(), wanted, offset);
    m_WindowStart = offset;
    m_WindowUsed = got < 0 ? 0 : static_cast<size_t>(got);
    m_ViewsInWindow = 0;
    return got >= 0;
}

const uint8_t* ContentsReader::viewSome(uint64_t offset, size_t count, size_t& got) {
    const bool isInside = offset >= m_WindowStart && offset - m_WindowStart <= m_WindowUsed &&
                          count <= m_WindowUsed - (offset - m_WindowStart);
    if (!isInside && !moveWindow(offset, count)) {
        return nullptr;
    }
    ++m_ViewsInWindow;
    const auto position = static_cast<size_t>(offset - m_WindowStart);
    got = std::min(count, m_WindowUsed - position);
    return m_Window.data() + position;
}

const uint8_t* ContentsReader::view(uint64_t offset, size_t count) {
    size_t got = 0;
    const uint8_t* bytes = viewSome(offset, count, got);
    if (bytes != nullptr && got < count) {
        errno = EIO;
        return nullptr;
    }
    return bytes;
}

bool ContentsReader::read(void* buffer, size_t count, uint64_t offset) const {
    const int64_t got = m_File.readAt(buffer, count, offset);
    if (got >= 0 && static_cast<size_t>(got) < count) {
        errno = EIO;
    }
    return got == static_cast<int64_t>(count);
}

void ContentsSources::closeReader(ContentsReader& reader) {
    if (!reader.close()) {
        m_CloseError = errno;
    }
}

ContentsSources::Entry& ContentsSources::entryFor(const SourceFilePointer& source) {
    const auto isOfSource = [&source](const Entry& entry) { return entry.source == source; };
    const auto known = std::find_if(m_Entries.begin(), m_Entries.end(), isOfSource);
    if (known != m_Entries.end()) {
        return *known;
    }
    if (m_Entries.size() < capacity) {
        m_Entries.reserve(capacity); // entries stay where they are
        m_Entries.push_back({source, std::make_unique<ContentsReader>(), 0});
        return m_Entries.back();
    }
    const auto isOlder = [](const Entry& left, const Entry& right) {
        return left.lastUse < right.lastUse;
    };
    Entry& oldest = *std::min_element(m_Entries.begin(), m_Entries.end(), isOlder);
    closeReader(*oldest.reader);
    oldest.source = source;
    return oldest;
}

ContentsReader* ContentsSources::open(const SourceFilePointer& source) {
    Entry& entry = entryFor(source);
    entry.lastUse = ++m_Uses;
    m_Current = &entry;
    if (entry.reader->file().isOpen()) {
        return entry.reader.get();
    }
    if (!entry.reader->open(source->name.c_str())) {
        return nullptr;
    }
    if (source->isArchive) {
        platform::FileStatus present;
        const int error = entry.reader->file().queryStatus(present) ? ESTALE : errno;
        if (!present.isSameState(source->status)) {
            entry.reader->close();
            errno = error;
            return nullptr;
        }
    }
    return entry.reader.get();
}

bool ContentsSources::release() {
    return m_Current == nullptr || m_Current->source->isArchive || m_Current->reader->close();
}

bool ContentsSources::closeAll() {
    for (Entry& entry : m_Entries) {
        closeReader(*entry.reader);
    }
    m_Entries.clear();
    m_Current = nullptr;
    errno = std::exchange(m_CloseError, 0);
    return errno == 0;
}

} // namespace arlib
