#pragma once

#include <BaseObj/KxDbObjectId.h>
#include <KxGeBasic/KxGeBasic.h>
#include <QuorScriptor/Export.h>
#include <lua.hpp>
#include <string>
#include <vector>

namespace lua_tinker {
class table;
}

/// Geometry and ids across the border to Lua.
///
/// Shapes: a point or vector is {x, y, z}; a matrix is four rows of four numbers, row-major; an id is the
/// binding layer's 64-bit integer; an array is a sequence; a polyline vertex is {kind, point, bulge, start
/// width, end width}, the bulge first on purpose.
///
/// A single value can stand in three places, which are three overloads: at a stack index; at an integer key
/// of the table at a stack index (read without metamethods); in a named field of the table at a stack index
/// (read with them). The stack-form getters of points, vectors and
/// ids return 0 on success and 1 on failure, all others true and false. On failure the output is untouched
/// unless said otherwise. All leave the stack as it was [-0, +0, -] and raise nothing. A writer that finds no
/// table or meets a raising metamethod writes nothing; one that runs out of memory has written a part at
/// most. Nothing is printed.
///
/// The named-field getters take the table's index as it stands after the name was pushed: give them a
/// positive one.
namespace quorlua {

QUORSCRIPTOR_API int getAKxGePoint(lua_State* L, int index, KxGePoint3D& point);
QUORSCRIPTOR_API bool getAKxGePoint(lua_State* L, int tableIndex, int key, KxGePoint3D& point);
QUORSCRIPTOR_API bool getAKxGePoint(lua_State* L, int tableIndex, const char* name, KxGePoint3D& point);

QUORSCRIPTOR_API int getAKxGeVector(lua_State* L, int index, KxGeVector3D& vector);
QUORSCRIPTOR_API bool getAKxGeVector(lua_State* L, int tableIndex, int key, KxGeVector3D& vector);
QUORSCRIPTOR_API bool getAKxGeVector(lua_State* L, int tableIndex, const char* name, KxGeVector3D& vector);

/// Fills the existing table at the index.
QUORSCRIPTOR_API void setAKxGePoint(lua_State* L, int index, const KxGePoint3D& point);
/// Stores a new table at the key or in the field; a null or empty name stores nothing.
QUORSCRIPTOR_API void setAKxGePoint(lua_State* L, int tableIndex, int key, const KxGePoint3D& point);
QUORSCRIPTOR_API void setAKxGePoint(lua_State* L, int tableIndex, const char* name, const KxGePoint3D& point);

QUORSCRIPTOR_API void setAKxGeVector(lua_State* L, int index, const KxGeVector3D& vector);
QUORSCRIPTOR_API void setAKxGeVector(lua_State* L, int tableIndex, int key, const KxGeVector3D& vector);
QUORSCRIPTOR_API void setAKxGeVector(lua_State* L, int tableIndex, const char* name,
                                     const KxGeVector3D& vector);

/// Reads a 64-bit integer or a plain number, cut to an integer; a foreign userdata gives the id 0. A null or
/// empty name is a failure, whereas points and matrices are read from the field of an empty name, too.
QUORSCRIPTOR_API int getAKxDbObjectId(lua_State* L, int index, KxDbObjectId& id);
QUORSCRIPTOR_API bool getAKxDbObjectId(lua_State* L, int tableIndex, int key, KxDbObjectId& id);
QUORSCRIPTOR_API bool getAKxDbObjectId(lua_State* L, int tableIndex, const char* name, KxDbObjectId& id);

/// A table of another length than 4 leaves the matrix untouched. A bad row, which is one of another length or
/// with an entry that is no number, leaves the rows before it set.
QUORSCRIPTOR_API bool getMatrix(lua_State* L, int index, KxGeMatrix3D& matrix);
QUORSCRIPTOR_API bool getMatrix(lua_State* L, int tableIndex, int key, KxGeMatrix3D& matrix);
QUORSCRIPTOR_API bool getMatrix(lua_State* L, int tableIndex, const char* name, KxGeMatrix3D& matrix);
QUORSCRIPTOR_API bool getMatrix(lua_tinker::table& table, KxGeMatrix3D& matrix);
QUORSCRIPTOR_API void setMatrix(lua_tinker::table& table, const KxGeMatrix3D& matrix);

/// Array readers: clear the vector, append the entries that can be read, pass over the others; true when any
/// was.
QUORSCRIPTOR_API bool getKxGePointArray(lua_State* L, int index, std::vector<KxGePoint3D>& points);
QUORSCRIPTOR_API bool getKxDbObjectIdArray(lua_State* L, int index, std::vector<KxDbObjectId>& ids);
/// A text ends at its first NUL. Texts beyond 1 GiB in all are passed over.
QUORSCRIPTOR_API bool getStringArray(lua_State* L, int index, std::vector<std::string>& texts);

/// Array writers: store element i at key i+1 of the existing table.
QUORSCRIPTOR_API void setKxGePointArray(lua_State* L, int index, const std::vector<KxGePoint3D>& points);
QUORSCRIPTOR_API void setKxDbObjectIdArray(lua_State* L, int index, const std::vector<KxDbObjectId>& ids);
QUORSCRIPTOR_API void setStringArray(lua_State* L, int index, const std::vector<std::string>& texts);

/// Appends, without clearing, the table's vertices in traversal order; false at the first value that is no
/// vertex, with those before it appended. A missing number keeps the vertex's default.
QUORSCRIPTOR_API bool getQuorPolyDescArray(lua_State* L, int index, std::vector<QuorPolyDesc>& vertices);
QUORSCRIPTOR_API bool setQuorPolyDescArray(lua_State* L, int index,
                                           const std::vector<QuorPolyDesc>& vertices);
/// Stores a table of vertices at key i+1 for the i-th polyline.
QUORSCRIPTOR_API bool setSpolygonDesc2Lua(lua_State* L, int index,
                                          const std::vector<std::vector<QuorPolyDesc>>& polylines);

} // namespace quorlua
