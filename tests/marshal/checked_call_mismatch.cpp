// One mismatch between a format and its C++ items, chosen by MISMATCH; 0 is a call that fits. Only ever read
// by the compiler.

#include <QuorScriptor/luacall.h>

bool call(lua_State* L)
{
    int integer = 0;
    double number = 0;
    const char* text = "";
    std::string string;
    KxGePoint3D point;
    KxGeVector3D vector;
    std::vector<QuorPrimary*> primitives;
    lua_tinker::table table;
    const GlibTextStyle* style = nullptr;
#if MISMATCH == 0
    return quorlua::callLua<"isrpcx>idpTc">(L, "f", integer, text, string, point, table, style, &integer,
                                            &number, &point, &primitives, &table);
#elif MISMATCH == 1
    return quorlua::callLua<"i">(L, "f", number);
#elif MISMATCH == 2
    return quorlua::callLua<"ip">(L, "f", integer, vector);
#elif MISMATCH == 3
    return quorlua::callLua<"s">(L, "f", string);
#elif MISMATCH == 4
    return quorlua::callLua<"r>i">(L, "f", text, &integer);
#elif MISMATCH == 5
    return quorlua::callLua<">d">(L, "f", &integer);
#elif MISMATCH == 6
    return quorlua::callLua<"i>id">(L, "f", integer, &integer, number);
#elif MISMATCH == 7
    return quorlua::callLua<">s">(L, "f", &text);
#elif MISMATCH == 8
    return quorlua::callLua<"iT">(L, "f", integer, primitives);
#elif MISMATCH == 9
    return quorlua::callLua<"i?">(L, "f", integer, integer);
#elif MISMATCH == 10
    return quorlua::callLua<"i>ix">(L, "f", integer, &integer, &style);
#elif MISMATCH == 11
    return quorlua::callLua<">i?">(L, "f", &integer, &integer);
#elif MISMATCH == 12
    return quorlua::callLua<"ii>i">(L, "f", integer, &integer);
#elif MISMATCH == 13
    return quorlua::callLua<"i>i">(L, "f", integer, &integer, &integer);
#elif MISMATCH == 14
    return quorlua::callLua<">t">(L, "f", &table);
#elif MISMATCH == 15
    return quorlua::callLua<"n">(L, "f", integer);
#elif MISMATCH == 16
    return quorlua::callLua<"i>i>i">(L, "f", integer, &integer, &integer, &integer);
#endif
}
