// From the bodies of a section to records of a module, its sections and its symbols.

#include <cstring>
#include <unordered_map>

#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/feature_words.h"
#include "elfext/interface/build_attributes_parsers.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/section.h"
#include "elfext/interface/symbol.h"

namespace elfext {

namespace {

using attributes::BuildAttributes;
using attributes::BuildAttributesBlock;
using attributes::BuildAttributesCache;

// Two tags are set right after decoding. They are judged by the meaning that the record had before
// it, since decoding does not derive a new one: required, a record that is decoded at once stays
// as it was written.
void correctFloatingPointModel(BuildAttributes& record) {
    const attributes::FullAttr& value = record.fullAttr;
    if (!hasAll(value.isa, attributes::feature_word::PURE_DOUBLES)) {
        return;
    }
    namespace option_bit = attributes::option_bit;
    const auto hasOptions = [&value](uint64_t bits) { return (value.options & bits) == bits; };
    if (hasOptions(option_bit::IEEEX) || hasOptions(option_bit::IEEEF)) {
        record.setTag(attributes::Tag_ABI_FP_number_model, 3);
    } else if (hasOptions(option_bit::IEEEJ)) {
        record.setTag(attributes::Tag_ABI_FP_number_model, 2);
    } else if (!hasAll(value.isa, attributes::feature_word::FZ_POSZERO)) {
        record.setTag(attributes::Tag_ABI_FP_denormal, 2);
    }
}

void correctArchitecture(BuildAttributes& record) {
    if (record.getNumber(attributes::Tag_CPU_arch) == 1 &&
        hasAll(record.fullAttr.isa, attributes::feature_word::OS_EXTENSION)) {
        record.setTag(attributes::Tag_CPU_arch, 2);
    }
}

// The bytes that are copied and read, about, when a record with these lists is copied and looked
// up.
uint64_t weightOf(const BuildAttributes& record) {
    uint64_t weight = 0;
    if (record.m_CompatibilityTags != nullptr) {
        for (const attributes::CompatibilityTag& entry : *record.m_CompatibilityTags) {
            weight += sizeof entry + std::strlen(entry.vendorName);
        }
    }
    if (record.m_AlsoCompatibilityTags != nullptr) {
        for (const attributes::AlsoCompatibilityTag& entry : *record.m_AlsoCompatibilityTags) {
            weight += sizeof entry + (entry.hasText() ? std::strlen(entry.getText()) : 0);
        }
    }
    return weight;
}

} // namespace

// One body that is applied to any number of targets.
//
// Targets with the same record before have the same record afterwards, so each such record is
// decoded once.
class BuildAttributesInjector::Application {
public:
    Application(BuildAttributesInjector& injector, const char* vendorName, const uint8_t* data,
                uint32_t length)
        : m_Injector(injector), m_Cache(*injector.m_ObjectModule->getBuildAttributesCache()),
          m_VendorName(vendorName), m_Data(data), m_Length(length),
          m_IsQeabi(std::strcmp(vendorName, attributes::VendorName_Qeabi) == 0),
          m_IsQel(std::strcmp(vendorName, attributes::VendorName_Qel) == 0) {}

    // False if the attributes are bad. Whatever could be read of them is applied.
    bool applyTo(ObjectWithBuildAttributes& target) {
        if (!keepBlock()) {
            return false;
        }
        // With what is interned this costs nothing, however long name and body are.
        target.addBuildAttributesBlock(m_Block->getVendorName(), m_Block->getData(),
                                       m_Block->getLength());
        if (!m_IsQeabi && !m_IsQel) {
            return true;
        }
        const BuildAttributes* const before = target.getOwnBuildAttributes();
        const Outcome* const outcome = outcomeFor(before);
        if (outcome == nullptr) {
            return false;
        }
        target.setBuildAttributes(*outcome->record);
        return outcome->isSound;
    }

private:
    struct Outcome {
        const BuildAttributes* record; // interned
        bool isSound;
    };

    // The body's block in the module's cache. False if that is too much work: a name is found by
    // reading it, and each of many bodies has it.
    bool keepBlock() {
        if (m_Block == nullptr) {
            if (m_Injector.m_IsExhausted ||
                !m_Injector.spend(std::strlen(m_VendorName) / NameBytesPerWork)) {
                return false;
            }
            m_Block = m_Cache.internBlock(m_VendorName, m_Data, m_Length);
        }
        return true;
    }

    // What the body makes of a record, which may be null; null if that is too much work.
    const Outcome* outcomeFor(const BuildAttributes* before) {
        if (m_LastOutcome != nullptr && m_LastRecord == before) {
            return m_LastOutcome;
        }
        const auto known = m_Outcomes.find(before);
        if (known != m_Outcomes.end()) {
            return &known->second;
        }
        if (!m_Injector.spend(m_Length) ||
            (before != nullptr && !m_Injector.spend(weightOf(*before)))) {
            return nullptr;
        }
        m_LastRecord = before;
        m_LastOutcome = &m_Outcomes.emplace(before, decode(before)).first->second;
        return m_LastOutcome;
    }

    Outcome decode(const BuildAttributes* before) {
        BuildAttributes record;
        if (before != nullptr) {
            record = *before;
        }
        bool isSound = false;
        if (m_IsQeabi) {
            isSound = QeabiBuildAttributesDecodingParser(&record).parse(m_Data, m_Length);
            correctFloatingPointModel(record);
            correctArchitecture(record);
        } else {
            isSound = QelBuildAttributesDecodingParser(&record).parse(m_Data, m_Length);
            const uint32_t version = record.getNumber(attributes::Tag_AV_version);
            m_Cache.raiseHighestVersion(static_cast<uint8_t>(version));
        }
        return {m_Cache.internRecord(record), isSound};
    }

    // Names of a usual length count for nothing.
    static constexpr uint64_t NameBytesPerWork = 64;

    BuildAttributesInjector& m_Injector;
    BuildAttributesCache& m_Cache;
    const char* m_VendorName;
    const uint8_t* m_Data;
    uint32_t m_Length;
    const BuildAttributesBlock* m_Block = nullptr;
    bool m_IsQeabi;
    bool m_IsQel;
    const BuildAttributes* m_LastRecord = nullptr;
    const Outcome* m_LastOutcome = nullptr;
    std::unordered_map<const BuildAttributes*, Outcome> m_Outcomes;
};

bool BuildAttributesInjector::spend(uint64_t work) {
    // Once it was too much, nothing is good any more: finding that out is work too.
    m_IsExhausted = m_IsExhausted || work > m_AllowedWork;
    m_AllowedWork -= m_IsExhausted ? 0 : work;
    return !m_IsExhausted;
}

bool BuildAttributesInjector::parseFileSubSubsection(const char* vendorName, const uint8_t* data,
                                                     uint32_t length) {
    if (pass != Pass_File) {
        return true;
    }
    allowFor(length);
    return Application(*this, vendorName, data, length).applyTo(*m_ObjectModule);
}

bool BuildAttributesInjector::parseSectionSubSubsection(const char* vendorName,
                                                        const uint32_t* indexes,
                                                        uint32_t indexCount, const uint8_t* data,
                                                        uint32_t length) {
    if (pass != Pass_Sections) {
        return true;
    }
    allowFor(uint64_t{length} + indexCount);
    const auto& sections = m_ObjectModule->getSections();
    Application application(*this, vendorName, data, length);
    bool isGood = true;
    for (uint32_t i = 0; i < indexCount; ++i) {
        const uint32_t index = indexes[i];
        if (index == 0 || index >= sections.getSize()) {
            isGood = false;
        } else if (sections[index] != nullptr) {
            isGood = application.applyTo(*sections[index]) && isGood;
        }
    }
    return isGood;
}

bool BuildAttributesInjector::parseSymbolSubSubsection(const char* vendorName,
                                                       const uint32_t* indexes, uint32_t indexCount,
                                                       const uint8_t* data, uint32_t length) {
    if (pass != Pass_Symbols) {
        return true;
    }
    allowFor(uint64_t{length} + indexCount);
    const auto& symbols = m_ObjectModule->getSymbols();
    Application application(*this, vendorName, data, length);
    bool isGood = true;
    for (uint32_t i = 0; i < indexCount; ++i) {
        const uint32_t index = indexes[i];
        if (index == 0 || index > symbols.getSize()) {
            isGood = false;
        } else {
            isGood = application.applyTo(*symbols[index - 1]) && isGood;
        }
    }
    return isGood;
}

} // namespace elfext
