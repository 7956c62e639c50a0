// Feeds any bytes to the walk over a section of build attributes, and attaches what it finds to a
// module. The first byte of the input is the byte order.
//
// Whatever the bytes are, the walk ends with an answer, and it is the same answer when asked again.
// A fault in the structure is a fault for each pass; the records that come out are derived, go
// through text and back, and inherit from each other.

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "alloclib/interface/default_region.h"
#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/decoration.h"
#include "elfext/interface/build_attributes_parsers.h"
#include "elfext/interface/object_module.h"

namespace {

using attributes::BuildAttributes;

constexpr uint32_t TargetCount = 4;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void require(bool condition, const char* what) {
    if (!condition) {
        fail(what);
    }
}

// Looks at every byte that it is handed.
class TouchingParser final : public elfext::BuildAttributesSectionParser {
public:
    bool parseFileSubSubsection(const char* vendorName, const uint8_t* data,
                                uint32_t length) override {
        return touch(vendorName, nullptr, 0, data, length);
    }
    bool parseSectionSubSubsection(const char* vendorName, const uint32_t* indexes, uint32_t count,
                                   const uint8_t* data, uint32_t length) override {
        return touch(vendorName, indexes, count, data, length);
    }
    bool parseSymbolSubSubsection(const char* vendorName, const uint32_t* indexes, uint32_t count,
                                  const uint8_t* data, uint32_t length) override {
        return touch(vendorName, indexes, count, data, length);
    }

    uint64_t sum = 0;

private:
    bool touch(const char* vendorName, const uint32_t* indexes, uint32_t count, const uint8_t* data,
               uint32_t length) {
        for (; *vendorName != '\0'; ++vendorName) {
            sum = sum * 31 + static_cast<uint8_t>(*vendorName);
        }
        for (uint32_t i = 0; i < count; ++i) {
            require(indexes[i] != 0, "an index is 0");
            sum = sum * 31 + indexes[i];
        }
        for (uint32_t i = 0; i < length; ++i) {
            sum = sum * 31 + data[i];
        }
        return true;
    }
};

struct Module {
    Module() {
        module.createNullSection(0);
        for (uint32_t i = 0; i < TargetCount; ++i) {
            module.createSection(".text", elfext::SHT_PROGBITS, 0);
            elfext::SymbolFields fields{};
            fields.m_Name = "symbol";
            module.createAbsoluteSymbol(fields, 0);
        }
    }

    // The answers of the three passes, as bits.
    uint32_t inject(const uint8_t* data, size_t size, bool isLittleEndian) {
        uint32_t answers = 0;
        for (uint32_t pass = 0; pass < 3; ++pass) {
            elfext::BuildAttributesInjector injector(&module, pass);
            answers |= injector.parse(data, size, isLittleEndian) ? 1U << pass : 0U;
        }
        return answers;
    }

    elfext::ObjectModule module;
};

void checkRecord(const BuildAttributes& record, const BuildAttributes& base) {
    BuildAttributes copy(record);
    require(copy.equals(record) && copy.hash() == record.hash(), "a copy differs");
    copy.rebuildFullAttr();
    const attributes::FullAttr once = copy.fullAttr;
    copy.rebuildFullAttr();
    require(copy.fullAttr == once, "deriving twice differs");
    std::vector<char> text(attributes::printDecoration(once, nullptr, 0) + 1);
    attributes::printDecoration(once, text.data(), text.size());
    attributes::FullAttr read;
    attributes::parseDecoration(read, text.data());
    copy.fromFullAttr(read);
    copy.rebuildFullAttr();
    BuildAttributes joined;
    attributes::overlay(joined, base, record);
    BuildAttributes baseCopy(base);
    BuildAttributes difference;
    attributes::differenceFromBase(difference, baseCopy, joined);
    attributes::overlay(joined, base, difference);
}

void checkModule(const elfext::ObjectModule& module) {
    const attributes::BuildAttributesCache& cache = *module.getBuildAttributesCache();
    // The number of records is up to the input; a few of them will do.
    constexpr uint32_t Checked = 6;
    for (uint32_t i = 0; i < cache.getRecordCount() && i < Checked; ++i) {
        require(!cache.getRecord(i)->derivedStale, "an interned record is stale");
        checkRecord(*cache.getRecord(i), *cache.getRecord(0));
    }
    BuildAttributes result;
    for (const elfext::Section* const section : module.getSections()) {
        section->getBuildAttributes(result);
    }
    for (const elfext::Symbol* const symbol : module.getSymbols()) {
        symbol->getBuildAttributes(result);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    alloclib::startAllocators();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool isLittleEndian = (data[0] & 1) != 0;
    const uint8_t* const section = data + 1;
    const size_t length = size - 1;

    TouchingParser parser;
    const bool isSound = parser.parse(section, length, isLittleEndian);
    TouchingParser again;
    require(again.parse(section, length, isLittleEndian) == isSound && again.sum == parser.sum,
            "a second walk differs");

    Module first;
    const uint32_t answers = first.inject(section, length, isLittleEndian);
    require(isSound || answers == 0, "a pass does not see a fault");
    Module second;
    require(second.inject(section, length, isLittleEndian) == answers, "answers differ");
    require(second.module.getBuildAttributesCache()->getRecordCount() ==
                first.module.getBuildAttributesCache()->getRecordCount(),
            "records differ");
    checkModule(first.module);
    return 0;
}
