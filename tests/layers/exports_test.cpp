#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace {

#if defined(_WIN32)
constexpr char systemName[] = "windows";
#else
constexpr char systemName[] = "linux";
#endif

std::vector<std::string> linesOf(const std::string& path)
{
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/// Everything that the public headers declare, as the compiler read them; sorted.
const std::vector<std::string>& declared()
{
    static const std::vector<std::string> names = linesOf(QUOR_EXPORT_LISTS "/declared.txt");
    return names;
}

bool isClassOfAHeader(const std::string& name)
{
    const std::string scope = name + "::";
    const auto member = std::lower_bound(declared().begin(), declared().end(), scope);
    return member != declared().end() && member->compare(0, scope.size(), scope) == 0;
}

/// Takes the text away from the beginning of a name, if it begins so.
bool takePrefix(std::string& name, const std::string& prefix)
{
    const bool begins = name.compare(0, prefix.size(), prefix) == 0;
    if (begins) name.erase(0, prefix.size());
    return begins;
}

/// Constructors, destructors and assignments that nobody wrote: a DLL exports them with their class.
bool isImpliedMember(const std::string& name)
{
    const std::string function = name.substr(0, name.find('('));
    const std::size_t end = function.rfind("::");
    if (end == std::string::npos || !isClassOfAHeader(function.substr(0, end))) return false;
    const std::string scope = function.substr(0, end);
    const std::size_t outer = scope.rfind("::");
    const std::string simple = outer == std::string::npos ? scope : scope.substr(outer + 2);
    const std::string member = function.substr(end + 2);
    return member == simple || member == "~" + simple || member == "operator=";
}

bool standsInAHeader(std::string name)
{
    for (const char* table : {"vtable for ", "typeinfo for ", "typeinfo name for "})
        if (takePrefix(name, table)) return isClassOfAHeader(name);
    takePrefix(name, "non-virtual thunk to ");
    takePrefix(name, "virtual thunk to ");
    return std::binary_search(declared().begin(), declared().end(), name) || isImpliedMember(name);
}

/// One library of those that are shipped.
class Exports : public testing::TestWithParam<const char*> {
protected:
    static std::vector<std::string> actual()
    {
        return linesOf(std::string(QUOR_EXPORT_LISTS "/") + GetParam() + ".txt");
    }
    static std::vector<std::string> kept()
    {
        return linesOf(std::string(QUOR_SOURCE_DIR "/tests/layers/exports/") + GetParam() + "." + systemName +
                       ".txt");
    }
};

// A change that is meant is taken over with `./dev exports`.
TEST_P(Exports, AreExactlyTheKeptList)
{
    EXPECT_THAT(actual(), testing::ElementsAreArray(kept()));
}

TEST_P(Exports, AllStandInAPublicHeader)
{
    std::vector<std::string> hidden = actual();
    ASSERT_THAT(hidden, testing::Not(testing::IsEmpty()));
    hidden.erase(std::remove_if(hidden.begin(), hidden.end(), standsInAHeader), hidden.end());
    EXPECT_THAT(hidden, testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Library, Exports,
                         testing::Values("KxGeBasic", "BaseObj", "QuorCommon", "QuorMsgHandle",
                                         "QuorPureScriptor", "QuorPrimary", "QuorScriptor"),
                         [](const auto& test) { return std::string(test.param); });

TEST(ExportsCheck, RefusesWhatNoHeaderDeclares)
{
    EXPECT_TRUE(standsInAHeader("quorlua::getAInt(lua_State*, int, int&)"));
    EXPECT_FALSE(standsInAHeader("quorlua::getAInt(lua_State*, int, short&)")) << "another overload";
    EXPECT_FALSE(standsInAHeader("getAInt(lua_State*, int, int&)")) << "another scope";
    EXPECT_TRUE(standsInAHeader("vtable for QuorPrimary"));
    EXPECT_FALSE(standsInAHeader("vtable for QuorPrimar"));
    EXPECT_TRUE(standsInAHeader("QuorPrimary2D::operator=(QuorPrimary2D const&)"));
    EXPECT_FALSE(standsInAHeader("QuorPrimary2D::swap(QuorPrimary2D&)"));
    EXPECT_FALSE(standsInAHeader("lua_pcall"));
}

} // namespace
