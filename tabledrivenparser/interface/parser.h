// The parser: from words to typed parameter values.
//
// A program builds a Parser from its option table and its parameter arrays, feeds it words, and
// reads the values by parameter index. Three things set it apart from an ordinary option parser. An
// option's name must be written in full; only a public option may be shortened, and only by an
// explicit "." at the end. An option can be reached in an old form (one dash before a long name,
// the wrong case for a letter), which draws a warning. And every setting is stamped with a sequence
// number that runs through the whole run.
//
// The road of a word: parseWords reads it, parseWord counts its dashes, parseOption finds its row
// (findOption), settles its argument, stores the value by the parameter's type, and goes on with
// the rest of the word where one-letter options are written together.
//
// Messages go to the Reporter. After a failure nothing is rolled back: what was stored before it
// stays. Not for use by two threads at once.
#pragma once

#include "tabledrivenparser/interface/match_string.h"
#include "tabledrivenparser/interface/option_table.h"
#include "tabledrivenparser/interface/owned_memory.h"
#include "tabledrivenparser/interface/parameters.h"
#include "tabledrivenparser/interface/reporter.h"
#include "tabledrivenparser/interface/trace_hook.h"
#include "tabledrivenparser/interface/word_source.h"

#include <cstdint>
#include <span>

namespace tabledrivenparser {

// The one-letter options met so far in one word.
using MatchChain = LinkedList<const MatchString*>;

// One option at work, the parser's own.
struct OptionUse;

class Parser : public OwnedMemory {
public:
    // The header `options` is copied; its rows, both arrays, the reporter and the listener (may be
    // null) must outlive the parser. If the table's activeMask is not all ones, each parameter with
    // a masked default is set to the one for that mask.
    Parser(const OptionTable& options, std::span<ParameterValue> values,
           std::span<const ParameterDescriptor> descriptors, Reporter& reporter,
           Listener* listener);
    // Ends the list of every vector parameter and sets its value to null. Stamps and other values
    // stay.
    ~Parser() override;

    // Reads all words of `source`, with `--` as the end of options. Texts are kept by address while
    // viaDepth() is 0, so the words must then outlive what is read from the values. For the filter
    // see parseOption.
    void parseWords(WordSource& source, uint32_t filterCount = 0, const uint32_t* filter = nullptr);
    // Handles one whole word, dashes included. `nextWord` is the word behind it, or null. The
    // result is the number of words used, as for parseOption.
    uint32_t parseWord(const char* word, const char* nextWord, uint32_t filterCount = 0,
                       const uint32_t* filter = nullptr);

    // Handles one word. `text` is the word without its leading dashes, `dashes` their number (0, 1
    // or 2; 0 makes the word positional), `nextWord` the word behind it or null. `chain` holds the
    // options that stood before `text` in the same word, null for a whole word.
    //
    // `filter` lists `filterCount` parameters. If there are any, this is a selective pass: a word
    // of another parameter is left alone with the result 1, unless that is of type VIA_FILE, and a
    // word with no row gives 0 without a message.
    //
    // The result is the number of words used: 1, or 2 if `nextWord` was the argument; 0 after a
    // failure that left the word unused.
    uint32_t parseOption(const char* text, const char* nextWord, uint32_t dashes, MatchChain* chain,
                         uint32_t filterCount, const uint32_t* filter);

    // The row for a word's text after `dashes` dashes. Reports an ambiguous short form, and warns
    // of a deprecated option and of old syntax.
    MatchString findOption(const char* text, uint32_t dashes);

    // Stamps `parameter` as set: the sequence number goes up by one and becomes its lastSet, and
    // its firstSet if that was 0.
    void bumpSequence(uint32_t parameter);

    Parameters& parameters() { return m_parameters; }
    const Parameters& parameters() const { return m_parameters; }
    const OptionTable& options() const { return m_options; }
    Reporter& reporter() const { return m_reporter; }
    // The number of settings stamped so far.
    uint32_t sequence() const { return m_sequence; }
    // Whether "--" was read: all later words are positional, also those of via files.
    bool endOfOptions() const { return m_endOfOptions != 0; }
    // How many via files are being read, one inside the other.
    uint32_t viaDepth() const { return m_viaDepth; }
    void setViaDepth(uint32_t depth) { m_viaDepth = depth; }

    // Who is told what the parser does; null, as it is at first, for nobody. Must outlive the
    // parser.
    void setTraceHook(TraceHook* hook) { m_traceHook = hook; }
    TraceHook* traceHook() const { return m_traceHook; }
    // Tells the hook, if there is one; for the library's own use.
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    void
    trace(const char* format, ...) const;

private:
    MatchString searchOption(const char* text, uint32_t dashes);
    bool isLeftAlone(const OptionUse& use) const;
    bool settleArgument(OptionUse& use);
    bool admitToChain(const OptionUse& use, const MatchChain& chain);
    uint32_t finishWord(const OptionUse& use, bool stored);
    uint32_t handleNotFound(const OptionUse& use);
    void reportNotFound(const OptionUse& use);

    uint32_t m_sequence = 0;
    Parameters m_parameters;
    OptionTable m_options;
    Reporter& m_reporter;
    uint32_t m_endOfOptions = 0;
    uint32_t m_viaDepth = 0;
    TraceHook* m_traceHook = nullptr;
};

} // namespace tabledrivenparser
