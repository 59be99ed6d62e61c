#pragma once

#include <KxGeBasic/KxGeBasic.h>
#include <lua.hpp>
#include <vector>

class QuorPrimary;

/// The baselines: what an experienced programmer would write against the C API for the same jobs. The message
/// handler comes from the registry, functions are found by name, results are checked, tables are made in
/// their final size, each field is popped after it is read.
namespace raw {

/// Keeps a message handler in the registry; its reference.
int keepHandler(lua_State* L);

bool callStatus(lua_State* L, int handler, const char* function, const char* a, const char* b, int& status);
bool callExchange(lua_State* L, int handler, const char* function, const KxGePoint3D& in, int& status,
                  KxGePoint3D& first, KxGePoint3D& second);

/// The text that a function answers, which lives as long as the script holds it; null without one.
const char* getText(lua_State* L, int handler, const char* function, const char* argument);

bool readPoint(lua_State* L, int index, KxGePoint3D& point);
void pushPoint(lua_State* L, const KxGePoint3D& point);
void readPoints(lua_State* L, int index, std::vector<KxGePoint3D>& points);
void writePoints(lua_State* L, int index, const std::vector<KxGePoint3D>& points);
bool readMatrix(lua_State* L, int index, KxGeMatrix3D& matrix);
void writeMatrix(lua_State* L, int index, const KxGeMatrix3D& matrix);

/// Cylinders, boxes, cones, lines, circles and changes of colour, stamped as the library stamps them.
void parseRecords(lua_State* L, int index, std::vector<QuorPrimary*>& out);

/// A state with the standard libraries, thirteen functions and one class of five methods; closed again.
void makeState();

} // namespace raw
