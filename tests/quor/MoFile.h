#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using MoTexts = std::vector<std::pair<std::string, std::string>>;

/// The first entry of a catalogue in UTF-8.
inline const std::pair<std::string, std::string> moHead = {"", "Content-Type: text/plain; charset=UTF-8\n"};

/// A number as it stands in a .mo file.
inline std::string moWord(std::size_t value, bool bigEndian = false)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(value >> 8 * (bigEndian ? 3 - i : i) & 0xFF);
    return bytes;
}

/// A compiled catalogue of messages, without the optional table of hashes.
inline std::string moFile(const MoTexts& texts, bool bigEndian = false)
{
    constexpr std::size_t head = 28;
    const std::size_t rows = 8 * texts.size();
    std::string tables[2];
    std::string strings;
    const auto add = [&](std::string& table, const std::string& text) {
        table += moWord(text.size(), bigEndian) + moWord(head + 2 * rows + strings.size(), bigEndian);
        strings += text + '\0';
    };
    for (const auto& [text, translation] : texts) {
        add(tables[0], text);
        add(tables[1], translation);
    }
    std::string file;
    for (const std::size_t word : {std::size_t{0x950412DE}, std::size_t{0}, texts.size(), head, head + rows,
                                   std::size_t{0}, head + 2 * rows})
        file += moWord(word, bigEndian);
    return file + tables[0] + tables[1] + strings;
}
