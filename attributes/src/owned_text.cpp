#include "attributes/interface/owned_text.h"

#include "alloclib/interface/alloclib.h"

#include <cstring>
#include <new>

namespace attributes {

char* OwnedText::duplicate(const char* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const size_t size = std::strlen(text) + 1;
    char* const copy = new (std::nothrow) char[size];
    if (copy == nullptr) {
        alloclib::endOutOfMemory(size);
    }
    std::memcpy(copy, text, size);
    return copy;
}

bool OwnedText::operator==(const OwnedText& other) const {
    if (m_Text == nullptr || other.m_Text == nullptr) {
        return m_Text == other.m_Text;
    }
    return std::strcmp(m_Text, other.m_Text) == 0;
}

} // namespace attributes
