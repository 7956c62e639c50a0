// A stream into memory, and a fixture that starts each test with a fresh message library whose
// texts go there.
#pragma once

#include "messages/interface/message_session.h"
#include "messages/interface/stream_switch.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>

class CapturedStream {
public:
    CapturedStream() : m_Stream(::open_memstream(&m_Bytes, &m_Size)) {}
    ~CapturedStream() {
        std::fclose(m_Stream);
        std::free(m_Bytes);
    }
    CapturedStream(const CapturedStream&) = delete;
    CapturedStream& operator=(const CapturedStream&) = delete;

    std::FILE* stream() { return m_Stream; }

    // What was written since the last call.
    std::string take() {
        std::fflush(m_Stream);
        std::string text(m_Bytes + m_Taken, m_Size - m_Taken);
        m_Taken = m_Size;
        return text;
    }

private:
    char* m_Bytes = nullptr;
    size_t m_Size = 0;
    size_t m_Taken = 0;
    std::FILE* m_Stream;
};

class MessagesTest : public testing::Test {
protected:
    explicit MessagesTest(const char* environmentLocale = "C") {
        ::setenv("LC_ALL", environmentLocale, 1);
        messages::initMessages();
        m_Switch = std::make_unique<messages::StreamSwitch>(m_Output.stream());
    }
    ~MessagesTest() override {
        m_Switch.reset();
        messages::setExitHandler(nullptr);
        messages::initMessages();
        ::unsetenv("LC_ALL");
    }

    std::string output() { return m_Output.take(); }

    CapturedStream m_Output;
    std::unique_ptr<messages::StreamSwitch> m_Switch;
};

// The same in an environment whose character set is UTF-8.
class Utf8MessagesTest : public MessagesTest {
protected:
    Utf8MessagesTest() : MessagesTest("C.UTF-8") {}
};
