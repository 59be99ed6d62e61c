#pragma once

#include <QuorScriptor/Export.h>
#include <QuorScriptor/GlibStatus.h>
#include <vector>

struct lua_State;
class QuorPrimary;

namespace quorlua {

/// Makes a primitive of every record in the table at a stack index and appends it to the vector; the caller
/// owns what was appended. Records are taken in the table's traversal order; one that is malformed, that
/// names no kind, or that the factory refuses is passed over. Attribute records change the calling thread's
/// current drawing attributes, which are stamped on what follows.
///
/// Messages about records of the kinds that report are shown when all records have been taken.
///
/// Returns InvalidArgument when there is no state or the value is no table, else Ok, with what was built so
/// far when memory, or a time limit, ran out. The table itself may be of any length. Of its groups, those
/// more than 1,024 deep and the records beyond 2,097,152 in one call are passed over; and so are, in one
/// call, records with lists beyond 67,108,864 entries in all, or with lists and texts beyond 1 GiB. The
/// current material and line type count as texts of each primitive that they are stamped on.
/// [-0, +0, -]
QUORSCRIPTOR_API Quor::GlibStatus parse_primary_byidx(lua_State* L, int index,
                                                      std::vector<QuorPrimary*>& out);

} // namespace quorlua
