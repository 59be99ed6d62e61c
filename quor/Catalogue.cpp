#include "Catalogue.h"

#include "CharacterSet.h"
#include "System.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace quor {
namespace {

constexpr std::uint32_t magic = 0x950412DE;
constexpr std::uint32_t newestRevision = 1;

// The file's head is five words: the magic number, the revision (its upper half says how to read the file),
// the number of texts, and where the tables of texts and of translations begin. A table has two words for
// each text: its length, without the NUL behind it, and its place.
constexpr std::size_t wordSize = 4;
constexpr std::size_t headSize = 5 * wordSize;
constexpr std::size_t rowSize = 2 * wordSize;

class CatalogueFile {
public:
    CatalogueFile(std::string_view bytes, const std::string& path) : bytes_(bytes), path_(path) {}

    Catalogue read()
    {
        if (bytes_.size() < headSize) fail("the file is too short");
        if (wordAt(0) != magic) {
            isBigEndian_ = true;
            if (wordAt(0) != magic) fail("the file begins otherwise");
        }
        if (wordAt(wordSize) >> 16 > newestRevision) fail("the file is of a later form");
        const std::size_t count = wordAt(2 * wordSize);
        const std::size_t texts = wordAt(3 * wordSize);
        const std::size_t translations = wordAt(4 * wordSize);
        checkTable(texts, count);
        checkTable(translations, count);

        Catalogue catalogue;
        bool hasHead = false;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string_view text = textAt(texts + i * rowSize);
            const std::string_view translation = textAt(translations + i * rowSize);
            if (text.empty()) {
                checkCharacterSet(translation);
                hasHead = true;
            } else if (!translation.empty()) {
                catalogue.emplace(text, translation);
            }
        }
        if (!hasHead) fail("it does not say that its character set is UTF-8");
        return catalogue;
    }

private:
    [[noreturn]] void fail(std::string_view found) const
    {
        throw std::runtime_error(
            fmt::format("{}: a compiled catalogue of messages is expected; {}", path_, found));
    }

    std::uint32_t wordAt(std::size_t place) const
    {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < wordSize; ++i) {
            const auto byte =
                static_cast<unsigned char>(bytes_[place + (isBigEndian_ ? i : wordSize - 1 - i)]);
            word = word << 8 | byte;
        }
        return word;
    }

    void checkTable(std::size_t place, std::size_t count) const
    {
        if (place > bytes_.size() || count > (bytes_.size() - place) / rowSize)
            fail("a table reaches beyond the file's end");
    }

    /// The text of a table's row, up to its first NUL.
    std::string_view textAt(std::size_t row)
    {
        const std::size_t length = wordAt(row);
        const std::size_t place = wordAt(row + wordSize);
        if (place >= bytes_.size() || length >= bytes_.size() - place)
            fail("a text reaches beyond the file's end");
        if (bytes_[place + length] != '\0') fail("a text is not ended by a NUL");
        // Texts that lie upon each other could fill any memory.
        read_ += length;
        if (read_ > bytes_.size()) fail("its texts lie upon each other");
        const std::string_view text = bytes_.substr(place, length);
        return text.substr(0, text.find('\0'));
    }

    void checkCharacterSet(std::string_view head) const
    {
        constexpr std::string_view key = "charset=";
        const std::size_t found = head.find(key);
        const std::string_view rest = found == std::string_view::npos ? "" : head.substr(found + key.size());
        const std::string set(rest.substr(0, rest.find_first_of(" \t\n")));
        if (set.empty()) fail("it does not say that its character set is UTF-8");
        if (charset::knownName(set) != "UTF-8") fail("its character set is not UTF-8");
    }

    std::string_view bytes_;
    const std::string& path_;
    bool isBigEndian_ = false;
    std::size_t read_ = 0;
};

/// In the words of `std::strerror`: those of an error code may be in another character set.
std::string reasonOf(const std::error_code& error, std::filesystem::file_type type)
{
    if (type == std::filesystem::file_type::not_found && !error) return std::strerror(ENOENT);
    return error ? std::strerror(error.default_error_condition().value()) : "not a regular file";
}

std::string bytesOf(const std::string& path)
{
    std::error_code error;
    const auto type = std::filesystem::status(system::pathOf(path), error).type();
    // Anything else but a file could block for ever.
    if (type != std::filesystem::file_type::regular) {
        const std::string reason = reasonOf(error, type);
        throw std::runtime_error(fmt::format("{}: cannot be read: {}", path, reason));
    }
    std::ifstream file(system::pathOf(path), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file) throw std::runtime_error(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
    return bytes;
}

} // namespace

Catalogue readCatalogue(const std::string& path)
{
    const std::string bytes = bytesOf(path);
    return CatalogueFile(bytes, path).read();
}

} // namespace quor
