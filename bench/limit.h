#pragma once

#include <KxGeBasic/KxGeBasic.h>
#include <lua.hpp>
#include <vector>

class QuorPrimary;

/// How fast the same jobs can be: tables in their final size, no key looked up by text that can be kept, one
/// cut of the stack per record, a type asked for only where a number was 0. Some of it gives up what the
/// library promises: metatables on the globals are missed, and an error of memory ends the process.
namespace limit {

/// Puts the message handler into slot 1 and the name of the function into slot 2, where they stay.
void keepHandlerAndName(lua_State* L, const char* function);

bool callStatus(lua_State* L, const char* a, const char* b, int& status);
bool callExchange(lua_State* L, const KxGePoint3D& in, int& status, KxGePoint3D& first, KxGePoint3D& second);
const char* getText(lua_State* L, const char* argument);

void readPoints(lua_State* L, int index, std::vector<KxGePoint3D>& points);
void writePoints(lua_State* L, int index, const std::vector<KxGePoint3D>& points);
bool readMatrix(lua_State* L, int index, KxGeMatrix3D& matrix);
void writeMatrix(lua_State* L, int index, const KxGeMatrix3D& matrix);

void parseRecords(lua_State* L, int index, std::vector<QuorPrimary*>& out);

void makeState();

} // namespace limit
