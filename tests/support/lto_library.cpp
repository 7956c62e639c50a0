#include "tests/support/lto_library.h"

#include <stdexcept>
#include <string_view>

#include "tests/support/witness.h"

namespace testsupport {

namespace {

// Functions that only have to be there do nothing.
constexpr std::string_view librarySource = R"(
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>

struct symbol { unsigned attributes; char *name; };
struct module { char *bytes; struct symbol *symbols; unsigned count; };

static char *error_text;
static int modules_read;

static void note(const char *call, long number) {
    const char *name = getenv("TOMEX_LTO_LOG");
    FILE *file = name ? fopen(name, "a") : NULL;
    if (file) {
        fprintf(file, "%s %ld\n", call, number);
        fclose(file);
    }
}

static int is(const char *line, const char *order) {
    return strncmp(line, order, strlen(order)) == 0;
}

/* Does as a line orders. 0 ends the reading. */
static int obey(const char *line) {
    const char *text = strchr(line, ' ') ? strchr(line, ' ') + 1 : "";
    if (is(line, "!fail") || is(line, "!silent")) {
        error_text = is(line, "!fail") ? strdup(text) : NULL;
        return 0;
    }
    if (is(line, "!say")) { fprintf(stderr, "%s\n", text); printf("%s\n", text); fflush(stdout); }
    if (is(line, "!die")) { fprintf(stderr, "%s\n\n", text); abort(); }
    if (is(line, "!crash")) { raise(SIGSEGV); }
    if (is(line, "!exit")) { exit(0); }
    if (is(line, "!fill")) {
        /* From the host itself: a sanitizer's allocator would not let it come to that. */
        while (mmap(NULL, 1 << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE,
                    -1, 0) != MAP_FAILED) { }
        fprintf(stderr, "all memory is used\n");
        abort();
    }
    if (is(line, "!second") && modules_read > 1) { fprintf(stderr, "not the first\n"); abort(); }
    return 1;
}

#ifndef WITHOUT_lto_get_error_message
const char *lto_get_error_message(void) { note("error", 0); return error_text; }
#endif

#ifndef WITHOUT_lto_module_create_in_local_context
void *lto_module_create_in_local_context(const void *mem, size_t length, const char *path) {
    struct module *module = calloc(1, sizeof *module);
    char *line, *rest;
    note("create", (long)length);
    ++modules_read;
    rest = module->bytes = calloc(1, length + 1);
    memcpy(module->bytes, mem, length);
    module->symbols = calloc(length + 1, sizeof *module->symbols);
    while ((line = strsep(&rest, "\n")) != NULL) {
        struct symbol *symbol = &module->symbols[module->count];
        if (is(line, "!path")) {
            symbol->attributes = 0x1900;
            symbol->name = strdup(path);
            ++module->count;
        } else if (*line == '!') {
            if (!obey(line)) { return NULL; }
        } else if (*line) {
            char *end;
            symbol->attributes = (unsigned)strtoul(line, &end, 16);
            symbol->name = *end == ' ' ? end + 1 : NULL;
            ++module->count;
        }
    }
    return module;
}
#endif

#ifndef WITHOUT_lto_module_dispose
void lto_module_dispose(void *module) { (void)module; note("dispose", 0); }
#endif
#ifndef WITHOUT_lto_module_get_num_symbols
unsigned lto_module_get_num_symbols(void *module) {
    note("count", 0);
    return ((struct module *)module)->count;
}
#endif
#ifndef WITHOUT_lto_module_get_symbol_name
const char *lto_module_get_symbol_name(void *module, unsigned index) {
    note("name", index);
    return ((struct module *)module)->symbols[index].name;
}
#endif
#ifndef WITHOUT_lto_module_get_symbol_attribute
unsigned lto_module_get_symbol_attribute(void *module, unsigned index) {
    note("attribute", index);
    return ((struct module *)module)->symbols[index].attributes;
}
#endif
)";

// Of those in the source.
constexpr size_t calledFunctions[] = {0, 1, 3, 4, 5, 6};

bool isCalled(size_t index) {
    for (const size_t called : calledFunctions) {
        if (called == index) {
            return true;
        }
    }
    return false;
}

} // namespace

const std::vector<std::string>& ltoFunctions() {
    static const std::vector<std::string> functions = {
        "lto_get_error_message",
        "lto_module_create_in_local_context",
        "lto_module_create_in_codegen_context",
        "lto_module_dispose",
        "lto_module_get_num_symbols",
        "lto_module_get_symbol_name",
        "lto_module_get_symbol_attribute",
        "lto_codegen_set_diagnostic_handler",
        "lto_codegen_create",
        "lto_codegen_dispose",
        "lto_codegen_add_module",
        "lto_codegen_set_pic_model",
        "lto_codegen_set_cpu",
        "lto_codegen_add_must_preserve_symbol",
        "lto_codegen_compile",
        "lto_codegen_compile_to_file",
        "lto_codegen_debug_options",
    };
    return functions;
}

void makeLtoLibrary(const ScratchFolder& folder, const std::string& file,
                    const std::vector<std::string>& without) {
    static const Witness compiler("clang");
    if (!compiler.present()) {
        throw std::runtime_error(compiler.absence());
    }
    std::string source = "#define _GNU_SOURCE\n" + std::string(librarySource);
    for (size_t i = 0; i < ltoFunctions().size(); ++i) {
        if (!isCalled(i)) {
            const std::string& name = ltoFunctions()[i];
            source += "\n#ifndef WITHOUT_" + name + "\nvoid " + name +
                      "(void) { note(\"never called\", 0); }\n#endif\n";
        }
    }
    folder.write("lto_library.c", source);
    std::vector<std::string> arguments = {"-shared", "-fPIC", "lto_library.c", "-o", file};
    for (const std::string& name : without) {
        arguments.push_back("-DWITHOUT_" + name);
    }
    const CommandResult result = compiler.run(folder, arguments);
    folder.remove("lto_library.c");
    if (!result.exitedWith(0)) {
        throw std::runtime_error(result.describe());
    }
}

} // namespace testsupport
