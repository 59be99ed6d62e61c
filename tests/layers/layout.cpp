// Where the fields of the classes lie that hosts share with the library, and the numbers of their
// enumerators: on every system that is built for, as hosts that were compiled long ago, or in another
// language, know them. The fields are mostly private, so this source is compiled without access control.
// Nothing here runs.

#include <BaseObj/BaseObj.h>
#include <BaseObj/KxDb.h>
#include <KxGeBasic/KxGeBasic.h>
#include <QuorCommon/QuorCommon.h>
#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorOprPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <cstddef>
#include <type_traits>

namespace {

#define QUOR_FIELD(record, field, type, offset)                                                              \
    static_assert(std::is_same_v<decltype(record::field), type> && offsetof(record, field) == (offset))

/// Whether a class has no table of functions and only fields of one access, so that its fields lie in order.
template<class T>
constexpr bool isRecord(std::size_t size, std::size_t alignment = 8)
{
    return std::is_standard_layout_v<T> && sizeof(T) == size && alignof(T) == alignment;
}

template<class E>
constexpr bool isNumbered(E enumerator, int number)
{
    return static_cast<int>(enumerator) == number;
}

static_assert(sizeof(void*) == 8 && sizeof(int) == 4 && sizeof(long long) == 8 && sizeof(short) == 2);
static_assert(sizeof(std::string) == 32 && sizeof(std::vector<int>) == 24);

// The scriptor and those beside it

static_assert(isRecord<QuorGlibScriptor>(64));
QUOR_FIELD(QuorGlibScriptor, state_, lua_State*, 0);
QUOR_FIELD(QuorGlibScriptor, baseTop_, int, 8);
QUOR_FIELD(QuorGlibScriptor, fileName_, char*, 16);
QUOR_FIELD(QuorGlibScriptor, modificationTime_, long long, 24);
QUOR_FIELD(QuorGlibScriptor, lastStatus_, Quor::GlibStatus, 32);
QUOR_FIELD(QuorGlibScriptor, functor_, const GlibScriptFunctor*, 40);
QUOR_FIELD(QuorGlibScriptor, loadFileCallback_, FunctionRightAfterLoadFile*, 48);
QUOR_FIELD(QuorGlibScriptor, flags_, int, 56);

static_assert(isRecord<QuorGlibScriptorHelper>(8));
QUOR_FIELD(QuorGlibScriptorHelper, scriptor_, QuorGlibScriptor*, 0);

static_assert(isRecord<quorlua::LuaLRegHelper>(16));
static_assert(std::is_same_v<quorlua::LuaLRegHelper::Map,
                             std::map<std::string, const luaL_Reg*, std::less<std::string>>>);
QUOR_FIELD(quorlua::LuaLRegHelper, lists_, quorlua::LuaLRegHelper::Map*, 0);
QUOR_FIELD(quorlua::LuaLRegHelper, merged_, std::vector<luaL_Reg*>*, 8);

static_assert(isRecord<quorlua::ScriptLimits>(24));
QUOR_FIELD(quorlua::ScriptLimits, seconds, double, 0);
QUOR_FIELD(quorlua::ScriptLimits, bytes, std::size_t, 8);
QUOR_FIELD(quorlua::ScriptLimits, untrusted, bool, 16);
static_assert(isNumbered(quorlua::LimitReached::None, 0) && isNumbered(quorlua::LimitReached::Time, 1) &&
              isNumbered(quorlua::LimitReached::Memory, 2));

static_assert(isRecord<quorlua::CallItem>(8) && sizeof(quorlua::CallItem::truth) == 1);
static_assert(sizeof(quorconfig::TempPermitNull) == 1);

// The three classes that hosts implement: a pointer to their functions, and nothing else

static_assert(std::is_polymorphic_v<GlibScriptFunctor> && sizeof(GlibScriptFunctor) == 8);
static_assert(std::is_polymorphic_v<GlibTextStyle> && sizeof(GlibTextStyle) == 8);
static_assert(std::is_polymorphic_v<FunctionRightAfterLoadFile> && sizeof(FunctionRightAfterLoadFile) == 8);
static_assert(std::is_polymorphic_v<PrimaryAttributeVisitor> && sizeof(PrimaryAttributeVisitor) == 8);

// Geometry

static_assert(isRecord<QuorPoint>(24));
QUOR_FIELD(QuorPoint, x, double, 0);
QUOR_FIELD(QuorPoint, y, double, 8);
QUOR_FIELD(QuorPoint, z, double, 16);
static_assert(isRecord<KxGePoint3D>(24) && isRecord<KxGeVector3D>(24));
QUOR_FIELD(KxGePoint3D, coordinates_, QuorPoint, 0);
QUOR_FIELD(KxGeVector3D, coordinates_, QuorPoint, 0);
using MatrixRows = std::array<std::array<double, 4>, 4>;
static_assert(isRecord<KxGeMatrix3D>(128) && isRecord<MatrixRows>(128));
QUOR_FIELD(KxGeMatrix3D, rows_, MatrixRows, 0);

static_assert(isRecord<QuorPolyDesc>(56));
QUOR_FIELD(QuorPolyDesc, kind, int, 0);
QUOR_FIELD(QuorPolyDesc, startWidth, double, 8);
QUOR_FIELD(QuorPolyDesc, endWidth, double, 16);
QUOR_FIELD(QuorPolyDesc, bulge, double, 24);
QUOR_FIELD(QuorPolyDesc, point, KxGePoint3D, 32);

static_assert(isRecord<geolib::paramt>(24));
QUOR_FIELD(geolib::paramt, next, geolib::paramt*, 0);
QUOR_FIELD(geolib::paramt, first, double, 8);
QUOR_FIELD(geolib::paramt, second, double, 16);

// Pairs of the standard library are no standard-layout classes where they were given base classes.
static_assert(sizeof(Keypoint) == 32 && std::is_same_v<Keypoint, std::pair<short, KxGePoint3D>>);

// Database objects and parameters

static_assert(isRecord<KxDbObjectId>(8));
QUOR_FIELD(KxDbObjectId, value_, long long, 0);

static_assert(isRecord<quor_binary>(16));
QUOR_FIELD(quor_binary, length, int, 0);
QUOR_FIELD(quor_binary, data, char*, 8);

static_assert(isRecord<KVValue>(72) && sizeof(KVTag) == 2);
QUOR_FIELD(KVValue, tag_, KVTag, 0);
QUOR_FIELD(KVValue, integer_, int, 4);
QUOR_FIELD(KVValue, number_, double, 8);
QUOR_FIELD(KVValue, point_, QuorPoint, 16);
QUOR_FIELD(KVValue, text_, std::string, 40);

static_assert(isRecord<KVParams>(136));
QUOR_FIELD(KVParams, key, std::string, 0);
QUOR_FIELD(KVParams, note, std::string, 32);
QUOR_FIELD(KVParams, value, KVValue, 64);

static_assert(isRecord<KVData>(104));
QUOR_FIELD(KVData, key, std::string, 0);
QUOR_FIELD(KVData, value, KVValue, 32);

// The binding layer and the message service

static_assert(isRecord<lua_tinker::table>(8) && isRecord<lua_tinker::table_obj>(16));
QUOR_FIELD(lua_tinker::table, object_, lua_tinker::table_obj*, 0);
QUOR_FIELD(lua_tinker::table_obj, state, lua_State*, 0);
QUOR_FIELD(lua_tinker::table_obj, index, int, 8);
QUOR_FIELD(lua_tinker::table_obj, handles, int, 12);

static_assert(isRecord<kxcom::MsgArg>(24));
QUOR_FIELD(kxcom::MsgArg, kind_, kxcom::MsgArg::Kind, 0);
QUOR_FIELD(kxcom::MsgArg, bytes_, unsigned char, 1);
QUOR_FIELD(kxcom::MsgArg, size_, std::size_t, 8);
QUOR_FIELD(kxcom::MsgArg, value_, kxcom::MsgArg::Value, 16);

// Primitives, whose setters and getters are compiled into hosts

static_assert(sizeof(QuorPrimary) == 24 && sizeof(QuorOprPrimary) == 24);
static_assert(sizeof(QuorPrimary3D) == 72 && sizeof(QuorPrimary2D) == 96 && sizeof(QuorPrimaryText) == 168);
static_assert(sizeof(QuorOprKVParamArray) == 48);

// Thread ids are as wide as the host passes them, and `long` is not the same everywhere.

static_assert(std::is_same_v<decltype(quorlua::allocThreadVars), void(unsigned long)>);
static_assert(std::is_same_v<decltype(quorlua::freeThreadVars), void(unsigned long)>);
static_assert(std::is_same_v<decltype(quorconfig::allocThreadConfig), void(unsigned int)>);
static_assert(std::is_same_v<decltype(quorconfig::freeThreadConfig), void(unsigned int)>);
static_assert(std::is_same_v<decltype(quorsys::currentThreadId), unsigned int()>);

#undef QUOR_FIELD

// Numbers

template<class E>
constexpr bool isInt = std::is_same_v<std::underlying_type_t<E>, int>;

static_assert(isInt<Quor::GlibStatus> && isInt<Quor::CadReturn> && isInt<ScriptorStatus>);
static_assert(isNumbered(Quor::Ok, 0) && isNumbered(Quor::FileNotExamined, 1) &&
              isNumbered(Quor::NoState, 3));
static_assert(isNumbered(Quor::ScriptFailed, 4) && isNumbered(Quor::ValueMissing, 8));
static_assert(isNumbered(Quor::SegmentMissing, 10) && isNumbered(Quor::InvalidArgument, 11));
static_assert(isNumbered(Quor::TableMissing, 12) && isNumbered(Quor::BufferRefused, 14));
static_assert(isNumbered(Quor::CadReturn::Accepted, 0) && isNumbered(Quor::CadReturn::StateMissing, 2));
static_assert(isNumbered(Quor::CadReturn::CallFailed, 5));
static_assert(isNumbered(ScriptorBit1, 1) && isNumbered(ScriptorBit2, 2) && isNumbered(ScriptorBit3, 4) &&
              isNumbered(ScriptorBit4, 8));

static_assert(isNumbered(KVTag::None, 0) && isNumbered(KVTag::Short, 1) && isNumbered(KVTag::Double, 2) &&
              isNumbered(KVTag::Point, 3) && isNumbered(KVTag::String, 4) && isNumbered(KVTag::Int, 5) &&
              isNumbered(KVTag::Bool, 8));
static_assert(isInt<KxDb::DbType> && isNumbered(KxDb::DbType::Sqlite, 0) &&
              isNumbered(KxDb::DbType::Odbc, 1));

using QuorAuth::Module;
static_assert(isInt<Module> && isNumbered(Module::None, 0) && isNumbered(Module::System, 1) &&
              isNumbered(Module::Pipe, 2) && isNumbered(Module::Equip, 3) && isNumbered(Module::Support, 4) &&
              isNumbered(Module::Iso, 5) && isNumbered(Module::Struct, 6) && isNumbered(Module::Hvac, 7) &&
              isNumbered(Module::Electric, 8) && isNumbered(Module::Instrument, 9));

static_assert(sizeof(PrimaryKind) == 1 && isNumbered(PrimaryKind::Plain, 0) &&
              isNumbered(PrimaryKind::Solid, 1) && isNumbered(PrimaryKind::Drawing, 2) &&
              isNumbered(PrimaryKind::Text, 3) && isNumbered(PrimaryKind::Operation, 4) &&
              isNumbered(PrimaryKind::Parameters, 5));
static_assert(isInt<QuorOprPrimary::BooleanOpr> && isNumbered(QuorOprPrimary::Unite, 1) &&
              isNumbered(QuorOprPrimary::Subtract, 2) && isNumbered(QuorOprPrimary::Intersect, 3) &&
              isNumbered(QuorOprPrimary::Slice, 4));

using Kind = kxcom::MsgArg::Kind;
static_assert(isNumbered(Kind::Signed, 0) && isNumbered(Kind::Unsigned, 1) && isNumbered(Kind::Real, 2) &&
              isNumbered(Kind::Boolean, 3) && isNumbered(Kind::Character, 4) && isNumbered(Kind::Text, 5) &&
              isNumbered(Kind::NullText, 6) && isNumbered(Kind::Pointer, 7));

} // namespace
