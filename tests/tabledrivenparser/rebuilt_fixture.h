// A parser whose descriptors know their rows, and its command line written anew.
#pragma once

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/interface/rebuilt_command_line.h"

#include <string>
#include <vector>

namespace tabledrivenparser {

class RebuiltTest : public ParserTest {
protected:
    // Gives each descriptor its rows, in table order. Before the words are read.
    void linkRows() {
        parser();
        m_rowsOfParameter.assign(m_descriptors.size(), {});
        for (const OptionRow& each : m_rows) {
            m_rowsOfParameter[each.parameter].push_back(&each);
        }
        for (size_t index = 0; index < m_descriptors.size(); ++index) {
            m_rowsOfParameter[index].push_back(nullptr);
            m_descriptors[index].rows = m_rowsOfParameter[index].data();
        }
    }
    std::string rebuilt() {
        std::string room(m_room, '!');
        TextBuffer buffer{m_room, room.data(), 0, 1, ' ', 0};
        const uint32_t size = rebuildCommandLine(parser(), buffer);
        EXPECT_EQ(size, buffer.length);
        EXPECT_LE(size, m_room);
        EXPECT_EQ(room[size - 1], '\0');
        return room.substr(0, size - 1);
    }
    std::string rebuiltFrom(std::initializer_list<const char*> words) {
        linkRows();
        parse(words);
        return rebuilt();
    }

    uint32_t m_room = 4000;

private:
    std::vector<std::vector<const OptionRow*>> m_rowsOfParameter;
};

} // namespace tabledrivenparser
