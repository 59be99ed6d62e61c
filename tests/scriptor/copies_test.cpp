#include "scriptor_fixture.h"

#include <cstring>
#include <new>

namespace {

/// An object that is never destroyed. The bytes that an assignment overwrites are kept aside, so that what
/// they own stays reachable: an assignment releases nothing.
template<class T>
class Undestroyed {
public:
    Undestroyed() : object_(new (bytes_) T) { std::memcpy(before_, bytes_, sizeof bytes_); }
    T& operator*() { return *object_; }
    T* operator->() { return object_; }

private:
    alignas(T) unsigned char bytes_[sizeof(T)];
    alignas(T) unsigned char before_[sizeof(T)];
    T* object_;
};

TEST(Copies, OfAScriptorShareItsStateAndFileName)
{
    ScriptFolder folder;
    LoadCounter counter;
    static Undestroyed<QuorGlibScriptor> copy;
    lua_State* replaced = copy->getLua(false);
    QuorGlibScriptor original;
    original.setLoadFileCallbk(&counter);
    original.setFlag(6);
    ASSERT_EQ(original.loadFile(folder.write("a.lua", "a = 1", 1000).c_str(), false), Quor::Ok);
    QuorGlibScriptor& result = *copy = original;
    EXPECT_EQ(&result, &*copy);
    EXPECT_EQ(copy->getLua(false), original.getLua(false));
    EXPECT_EQ(copy->getFileName(), original.getFileName());
    EXPECT_EQ(copy->get_mtime(), 1000);
    EXPECT_EQ(copy->getLoadFileCallbk(), &counter);
    EXPECT_TRUE(copy->checkFlag(ScriptorBit2));
    EXPECT_TRUE(copy->checkFlag(ScriptorBit3));
    EXPECT_EQ(lua_gettop(replaced), 1) << "the target's own state is not closed";
    lua_close(replaced);
}

TEST(Copies, OfAHelperShareItsScriptor)
{
    ScriptFolder folder;
    QuorGlibScriptorHelper original;
    ASSERT_TRUE(original.init(folder.write("a.lua", "").c_str(), nullptr));
    static Undestroyed<QuorGlibScriptorHelper> copy;
    *copy = original;
    EXPECT_EQ(copy->getScriptor(), original.getScriptor());
    EXPECT_EQ(copy->getL(), original.getL());
}

TEST(Copies, OfARegistryShareItsContainers)
{
    static const luaL_Reg list[] = {{nullptr, nullptr}};
    quorlua::LuaLRegHelper original;
    original.addLuaRegFunc("first", list);
    static Undestroyed<quorlua::LuaLRegHelper> copy;
    *copy = original;
    EXPECT_EQ(&copy->get_reg(), &original.get_reg());
    copy->addLuaRegFunc("second", list);
    EXPECT_EQ(original.get_reg().count("second"), 1u);
}

template<class T>
constexpr bool onlyAssigns = std::is_copy_assignable_v<T> && !std::is_copy_constructible_v<T>;

TEST(Copies, AreMadeByAssignmentOnly)
{
    EXPECT_TRUE(onlyAssigns<QuorGlibScriptor>);
    EXPECT_TRUE(onlyAssigns<QuorGlibScriptorHelper>);
    EXPECT_TRUE(onlyAssigns<quorlua::LuaLRegHelper>);
}

} // namespace
