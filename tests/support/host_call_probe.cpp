// A program that does what its arguments say, for the tests of the runner and the fault library.
//
// Each argument is an action with its own arguments behind ":". Every host call that an action
// makes prints a line with the call's name and how it went: a count, "ok" or the name of the error.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using Words = std::vector<std::string>;

void say(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
}

void tell(const char* call, bool good, const std::string& result = "ok") {
    const char* name = ::strerrorname_np(errno);
    say(std::string{call} + " " + (good ? result : name != nullptr ? name : "?"));
}

int openFile(const std::string& name, int flags) {
    errno = 0;
    const int file = ::open(name.c_str(), flags | O_CLOEXEC, 0644);
    tell("open", file >= 0);
    return file;
}

void closeFile(int file) {
    errno = 0;
    tell("close", ::close(file) == 0);
}

void writeFile(const Words& words) {
    const int file = openFile(words.at(1), O_WRONLY | O_CREAT | O_TRUNC);
    if (file >= 0) {
        errno = 0;
        const ssize_t count = ::write(file, words.at(2).data(), words.at(2).size());
        tell("write", count >= 0, std::to_string(count));
        closeFile(file);
    }
}

void writePieces(const Words& words) {
    const int file = openFile(words.at(1), O_WRONLY | O_CREAT | O_TRUNC);
    if (file >= 0) {
        std::vector<iovec> pieces;
        for (size_t i = 2; i < words.size(); ++i) {
            pieces.push_back({const_cast<char*>(words[i].data()), words[i].size()});
        }
        errno = 0;
        const ssize_t count = ::writev(file, pieces.data(), static_cast<int>(pieces.size()));
        tell("writev", count >= 0, std::to_string(count));
        closeFile(file);
    }
}

void readFile(const Words& words) {
    const int file = openFile(words.at(1), O_RDONLY);
    if (file >= 0) {
        char bytes[256];
        errno = 0;
        const ssize_t count = ::read(file, bytes, sizeof bytes);
        tell("read", count >= 0, std::string(bytes, static_cast<size_t>(count < 0 ? 0 : count)));
        struct stat status {};
        errno = 0;
        const int result = ::fstat(file, &status);
        tell("fstat", result == 0, std::to_string(status.st_size));
        closeFile(file);
    }
}

void streamWrite(const Words& words) {
    errno = 0;
    FILE* stream = std::fopen(words.at(1).c_str(), "wb");
    tell("fopen", stream != nullptr);
    if (stream != nullptr) {
        errno = 0;
        const size_t count = std::fwrite(words.at(2).data(), 1, words.at(2).size(), stream);
        tell("fwrite", errno == 0, std::to_string(count));
        say(std::string{"ferror "} + (std::ferror(stream) != 0 ? "yes" : "no"));
        errno = 0;
        tell("fclose", std::fclose(stream) == 0);
    }
}

void streamRead(const Words& words) {
    errno = 0;
    FILE* stream = std::fopen(words.at(1).c_str(), "rb");
    tell("fopen", stream != nullptr);
    if (stream != nullptr) {
        char bytes[256];
        errno = 0;
        const size_t count = std::fread(bytes, 1, sizeof bytes, stream);
        tell("fread", std::ferror(stream) == 0, std::string(bytes, count));
        std::fclose(stream);
    }
}

void streamReadCharacters(const Words& words) {
    std::FILE* stream = std::fopen(words.at(1).c_str(), "rb");
    tell("fopen", stream != nullptr);
    if (stream != nullptr) {
        std::string bytes;
        errno = 0;
        for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream)) {
            bytes += static_cast<char>(c);
        }
        tell("fgetc", std::ferror(stream) == 0);
        say("got " + bytes);
        std::fclose(stream);
    }
}

void copyFile(const Words& words) {
    const int from = openFile(words.at(1), O_RDONLY);
    const int to = openFile(words.at(2), O_WRONLY | O_CREAT | O_TRUNC);
    errno = 0;
    const ssize_t count = ::copy_file_range(from, nullptr, to, nullptr, 1000, 0);
    tell("copy_file_range", count >= 0, std::to_string(count));
    closeFile(from);
    closeFile(to);
}

void listFolder(const Words& words) {
    errno = 0;
    DIR* folder = ::opendir(words.at(1).c_str());
    tell("opendir", folder != nullptr);
    if (folder != nullptr) {
        errno = 0;
        const dirent* entry = ::readdir(folder);
        tell("readdir", entry != nullptr);
        ::closedir(folder);
    }
}

void simpleCall(const char* name, const std::function<int()>& call) {
    errno = 0;
    tell(name, call() == 0);
}

void look(const Words& words) {
    struct stat status {};
    simpleCall("stat", [&] { return ::stat(words.at(1).c_str(), &status); });
    simpleCall("access", [&] { return ::access(words.at(1).c_str(), F_OK); });
}

void echoInput(const Words& /*words*/) {
    char bytes[256];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    say(count < 0 ? "input closed" : "input " + std::string(bytes, static_cast<size_t>(count)));
}

void useMemory(const Words& words) {
    const size_t size = std::stoul(words.at(1)) << 20;
    char* memory = static_cast<char*>(std::malloc(size));
    if (memory == nullptr) {
        say("no memory");
        return;
    }
    std::memset(memory, 1, size);
    // The memory has to be looked at, lest a compiler leave it all out.
    say("memory " + std::to_string(memory[size / 2] + 0));
    std::free(memory);
}

// Reads behind the end of a block, which the address sanitizer notices.
void overrun(const Words& words) {
    std::vector<char> block(words.size());
    const volatile char* bytes = block.data();
    say("overrun " + std::to_string(bytes[words.size()] + 0));
}

// Sleeps until a signal ends it.
void waitForSignal(const Words& /*words*/) {
    for (;;) {
        ::pause();
    }
}

void cleanUpAndLeave(int /*signal*/) {
    constexpr char text[] = "handled\n";
    [[maybe_unused]] const ssize_t count = ::write(STDOUT_FILENO, text, sizeof text - 1);
    ::unlink("guarded");
    ::_exit(3);
}

const std::map<std::string, std::function<void(const Words&)>> actions = {
    {"write", writeFile},
    {"writev", writePieces},
    {"read", readFile},
    {"fwrite", streamWrite},
    {"fread", streamRead},
    {"fgetc", streamReadCharacters},
    {"copy", copyFile},
    {"list", listFolder},
    {"look", look},
    {"input", echoInput},
    {"memory", useMemory},
    {"overrun", overrun},
    {"wait", waitForSignal},
    {"rename",
     [](const Words& words) {
         simpleCall("rename", [&] { return ::rename(words.at(1).c_str(), words.at(2).c_str()); });
     }},
    {"unlink",
     [](const Words& words) {
         simpleCall("unlink", [&] { return ::unlink(words.at(1).c_str()); });
     }},
    {"echo", [](const Words& words) { say(words.at(1)); }},
    {"echo-error", [](const Words& words) { std::fprintf(stderr, "%s\n", words.at(1).c_str()); }},
    {"variable",
     [](const Words& words) {
         const char* value = std::getenv(words.at(1).c_str()); // NOLINT(concurrency-mt-unsafe)
         say(value != nullptr ? value : "(unset)");
     }},
    {"user",
     [](const Words& /*words*/) {
         say(std::to_string(::getuid()) + " " + std::to_string(::getgid()));
     }},
    {"guard", [](const Words& /*words*/) { std::signal(SIGTERM, cleanUpAndLeave); }},
    {"exit",
     [](const Words& words) { std::exit(std::stoi(words.at(1))); }}, // NOLINT(concurrency-*)
    {"raise", [](const Words& words) { std::raise(std::stoi(words.at(1))); }},
};

Words split(const std::string& text) {
    Words words;
    std::istringstream parts(text);
    std::string word;
    while (std::getline(parts, word, ':')) {
        words.push_back(word);
    }
    return words;
}

} // namespace

int main(int count, char** arguments) {
    for (int i = 1; i < count; ++i) {
        const Words words = split(arguments[i]);
        actions.at(words.at(0))(words);
    }
    return 0;
}
