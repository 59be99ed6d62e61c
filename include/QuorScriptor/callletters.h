#pragma once

#include <BaseObj/BaseObj.h>
#include <KxGeBasic/KxGeBasic.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <string>
#include <type_traits>
#include <vector>

class GlibTextStyle;
class QuorPrimary;

/// The one table of call letters. A format names, letter by letter, the arguments of a call to Lua before '>'
/// and its results after it. Every letter takes one item: numbers, truth values, C texts and bare pointers by
/// value, every other object by its address; a result is the address of where it goes.
///
/// The pusher of arguments, the reader of results and the check at compile time all read this table.
namespace quorlua {

/// A letter's C++ types: `Argument` is what is pushed, `Result` what is written; void where the letter has no
/// such side. Any other byte is no letter.
template<char letter>
struct CallLetter {
    using Argument = void;
    using Result = void;
};

#define QUOR_CALL_LETTER(letter, argument, result)                                                           \
    template<>                                                                                               \
    struct CallLetter<letter> {                                                                              \
        using Argument = argument;                                                                           \
        using Result = result;                                                                               \
    };

// clang-format off
//               letter  argument                               result
QUOR_CALL_LETTER('i', int,                                      int)
QUOR_CALL_LETTER('d', double,                                   double)
QUOR_CALL_LETTER('n', bool,                                     bool)
QUOR_CALL_LETTER('I', long long,                                long long)
QUOR_CALL_LETTER('s', const char*,                              char*)
QUOR_CALL_LETTER('r', std::string,                              std::string)
QUOR_CALL_LETTER('y', quor_binary,                              quor_binary)
QUOR_CALL_LETTER('u', void*,                                    void*)
QUOR_CALL_LETTER('o', KxDbObjectId,                             KxDbObjectId)
QUOR_CALL_LETTER('p', KxGePoint3D,                              KxGePoint3D)
QUOR_CALL_LETTER('v', KxGeVector3D,                             KxGeVector3D)
QUOR_CALL_LETTER('X', KxGeMatrix3D,                             KxGeMatrix3D)
QUOR_CALL_LETTER('P', std::vector<KxGePoint3D>,                 std::vector<KxGePoint3D>)
QUOR_CALL_LETTER('O', std::vector<KxDbObjectId>,                std::vector<KxDbObjectId>)
QUOR_CALL_LETTER('S', std::vector<std::string>,                 std::vector<std::string>)
QUOR_CALL_LETTER('g', std::vector<QuorPolyDesc>,                std::vector<QuorPolyDesc>)
QUOR_CALL_LETTER('l', std::vector<std::vector<QuorPolyDesc>>,   std::vector<std::vector<QuorPolyDesc>>)
QUOR_CALL_LETTER('m', std::vector<KVParams>,                    std::vector<KVParams>)
QUOR_CALL_LETTER('M', std::vector<KVParams>,                    std::vector<KVParams>)
QUOR_CALL_LETTER('a', std::vector<KVParams>,                    std::vector<KVParams>)
QUOR_CALL_LETTER('B', std::vector<std::vector<KVParams>>,       std::vector<std::vector<KVParams>>)
QUOR_CALL_LETTER('b', std::vector<std::vector<KVParams>>,       std::vector<std::vector<KVParams>>)
QUOR_CALL_LETTER('k', std::vector<KVData>,                      std::vector<KVData>)
QUOR_CALL_LETTER('T', void,                                     std::vector<QuorPrimary*>)
QUOR_CALL_LETTER('c', lua_tinker::table,                        lua_tinker::table)
QUOR_CALL_LETTER('t', lua_tinker::table,                        lua_tinker::table*)
QUOR_CALL_LETTER('x', const GlibTextStyle*,                     void)
// clang-format on
#undef QUOR_CALL_LETTER

/// Every byte that is a letter on either side.
inline constexpr char callLetters[] = "idnIsryuopvXPOSglmMaBbkTctx";

/// How an item travels in a variable argument list; None where the letter has no such side.
enum class CallItemKind : unsigned char { None, Int, Bool, Double, Int64, Address };

/// The kind of item of a letter's C++ type: scalars and pointers as they are, objects by address.
template<class T>
constexpr CallItemKind callItemKind()
{
    if constexpr (std::is_void_v<T>)
        return CallItemKind::None;
    else if constexpr (std::is_same_v<T, int>)
        return CallItemKind::Int;
    else if constexpr (std::is_same_v<T, bool>)
        return CallItemKind::Bool;
    else if constexpr (std::is_same_v<T, double>)
        return CallItemKind::Double;
    else if constexpr (std::is_same_v<T, long long>)
        return CallItemKind::Int64;
    else
        return CallItemKind::Address;
}

} // namespace quorlua
