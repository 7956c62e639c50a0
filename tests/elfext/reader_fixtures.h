// What the tests of the reader share: a module, a handler that writes down what it is told, and
// ways to read bytes that a test has made.
#pragma once

#include "elfext/interface/elf_object_module_reader.h"
#include "elfext/interface/error_handler.h"
#include "elfext/interface/object_module.h"
#include "tests/elfext/container_fixtures.h"
#include "tests/support/rich_elf.h"
#include "tests/support/scratch_folder.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace elfext::test {

struct Report {
    uint32_t severity = 0;
    std::string message;

    bool operator==(const Report& other) const = default;
};

inline void PrintTo(const Report& report, std::ostream* stream) {
    *stream << report.severity << " \"" << report.message << '"';
}

using Reports = std::vector<Report>;

// Answers every report alike.
class RecordingHandler : public ErrorHandler {
public:
    explicit RecordingHandler(bool goesOn = false) : m_GoesOn(goesOn) {}

    bool report(ObjectModule* objectModule, Severity severity, const char* message) override {
        m_Module = objectModule;
        m_Reports.push_back({severity, message});
        return m_GoesOn;
    }

    bool m_GoesOn;
    ObjectModule* m_Module = nullptr; // of the last report
    Reports m_Reports;
};

// The file name that tests read under if the name does not matter.
inline constexpr const char* testFileName = "test.o";

class ReaderTest : public ContainerTest {
protected:
    void SetUp() override {
        ContainerTest::SetUp();
        startModule();
    }
    void TearDown() override {
        m_Module.reset();
        ContainerTest::TearDown();
    }

    ObjectModule& module() { return *m_Module; }
    RecordingHandler& handler() { return m_Handler; }
    const Reports& reports() const { return m_Handler.m_Reports; }

    // A new module with the handler, which answers `goesOn` from now on.
    void startModule(bool goesOn = false) {
        m_Module.reset();
        m_Handler.m_GoesOn = goesOn;
        m_Handler.m_Reports.clear();
        m_Module = std::make_unique<ObjectModule>();
        m_Module->setErrorHandler(&m_Handler);
    }

    // Reads from memory; the bytes are kept for as long as the module.
    bool read(std::string bytes) {
        m_Bytes = std::move(bytes);
        return readElfBuffer(testFileName, reinterpret_cast<const uint8_t*>(m_Bytes.data()),
                             m_Bytes.size(), m_Module.get(), nullptr);
    }
    bool read(const testsupport::RichElf& rich) { return read(rich.bytes()); }

    // The same with a fresh module and a handler that lets the read go on.
    bool readOn(std::string bytes) {
        startModule(true);
        return read(std::move(bytes));
    }

    Section& section(size_t index) { return *module().getSection(static_cast<uint32_t>(index)); }
    std::string contentsOf(const Section& section) {
        const Buffer& buffer = section.getLoadedContents();
        return {reinterpret_cast<const char*>(buffer.getData()),
                static_cast<size_t>(buffer.getSize())};
    }

private:
    std::string m_Bytes;
    RecordingHandler m_Handler;
    std::unique_ptr<ObjectModule> m_Module;
};

// The test name of a format.
inline std::string formatName(testsupport::ElfFormat format) {
    return std::string(format.is64 ? "64" : "32") + (format.littleEndian ? "Little" : "Big");
}

// A test that runs for each class and byte order.
class ReaderFormatTest : public ReaderTest,
                         public testing::WithParamInterface<testsupport::ElfFormat> {
protected:
    static testsupport::ElfFormat format() { return GetParam(); }
};

#define INSTANTIATE_FORMATS(suite)                                                                 \
    INSTANTIATE_TEST_SUITE_P(                                                                      \
        Formats, suite, testing::ValuesIn(testsupport::allElfFormats),                             \
        [](const auto& parameter) { return ::elfext::test::formatName(parameter.param); })

// A text that may be null, "(null)" then.
inline std::string textOf(const char* text) {
    return text != nullptr ? text : "(null)";
}

// Where a section's bytes start in a finished file.
inline size_t placeOf(const std::string& file, size_t section) {
    return static_cast<size_t>(
        testsupport::sectionField(file, section, testsupport::SectionField::Offset));
}

// Replaces a number of `width` bytes in a section's contents.
inline void setContentsNumber(std::string& file, size_t section, uint64_t offset, size_t width,
                              uint64_t value) {
    testsupport::writeNumber(file, placeOf(file, section) + offset, width,
                             testsupport::formatOf(file).littleEndian, value);
}

} // namespace elfext::test
