// The virtual operations between host and library, by the numbers of their slots: as a host sees them that
// was built long ago, or in another language. GCC has one rule on every system: an object begins with a
// pointer to its class's functions, which stand there in the order of their declarations, a virtual
// destructor taking two places (one that destroys, one that also frees); and such a function is one that
// takes the object's address before its arguments.

#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorPrimaryFactories.h>
#include <QuorScriptor/QuorScriptor.h>
#include <array>
#include <cstring>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using testing::ElementsAre;
using Function = void (*)();

/// The slots that were called, in order.
std::vector<int> called;

/// What stands in one slot: notes its number and answers something of the result's type.
template<int slot, class Result, class... Arguments>
Result note(const void*, Arguments...)
{
    called.push_back(slot);
    if constexpr (std::is_pointer_v<Result>)
        return &called;
    else if constexpr (!std::is_void_v<Result>)
        return static_cast<Result>(slot + 1);
}

template<int slot, class Result, class... Arguments>
Function noting()
{
    return reinterpret_cast<Function>(&note<slot, Result, Arguments...>);
}

/// An object of the class `T`, made by hand out of the functions of its slots. Before them stand, as in every
/// such table, where the object begins and what it is; checks of types read them.
template<class T, std::size_t count>
class HandMade {
public:
    explicit HandMade(const std::array<Function, count>& slots) : table_{0, &typeid(T), slots}
    {
        called.clear();
    }
    HandMade(const HandMade&) = delete;
    HandMade& operator=(const HandMade&) = delete;

    T* get() { return reinterpret_cast<T*>(&slots_); }

private:
    struct Table {
        std::ptrdiff_t distance;
        const std::type_info* type;
        std::array<Function, count> slots;
    };

    Table table_;
    const Function* slots_ = table_.slots.data();
};
template<class T, class... Slots>
auto handMade(Slots... slots)
{
    return std::make_unique<HandMade<T, sizeof...(Slots)>>(std::array<Function, sizeof...(Slots)>{slots...});
}

void load(QuorGlibScriptor& scriptor, std::string script)
{
    const quor_binary buffer{static_cast<int>(script.size()), script.data()};
    ASSERT_EQ(scriptor.loadBuffer(buffer, 1000, false), Quor::Ok);
}

TEST(Slots, OfTheFunctorAreCalledInTheirOrder)
{
    using Half = unsigned short;
    const auto functor = handMade<GlibScriptFunctor>(
        noting<0, bool, KxDbObjectId&>(), noting<1, bool, int, KxGePoint3D&>(),
        noting<2, bool, KxGeMatrix3D&>(), noting<3, bool, Half, Half, KxGeVector3D&>(),
        noting<4, bool, Half, Half, Half, Half, KxGeMatrix3D&>(),
        noting<5, bool, Half, Half, KxGeMatrix3D&>(), noting<6, bool, Half, Half, Half, KxGeMatrix3D&>(),
        noting<7, bool, KxGeMatrix3D&, int, int>(), noting<8, void*>(), noting<9, bool, KxGeVector3D&>());
    QuorGlibScriptor scriptor;
    load(scriptor, R"(
        function ask()
            local answers = {
                glib.getCurrentObjectId(), glib.getIsoPoint(1), glib.getDefaultIsoMat(), glib.getIsoVgdir(1, 2),
                glib.getNormalIsoMat(1, 2, 3, 4), glib.getNormalIsoMat(1, 2), glib.getArcIsoMat(1, 2, 3),
                glib.getRefIsoMat(1, 2), glib.getCurrentObjectPointer(), glib.getPsView(),
            }
            for i = 1, 10 do assert(answers[i] ~= nil, i) end
        end)");
    scriptor.setFunction(functor->get());
    EXPECT_EQ(scriptor.callSeg("ask"), Quor::Ok);
    EXPECT_THAT(called, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST(Slots, OfTheTextStyleAreCalledInTheirOrder)
{
    const auto style = handMade<GlibTextStyle>(noting<0, double>(), noting<1, double, const char*>(),
                                               noting<2, double, const char*, double>(),
                                               noting<3, void, const char*>(), noting<4, double>());
    QuorGlibScriptor scriptor;
    load(scriptor, R"(
        function ask()
            local style = glib.getCurrentTxtstyle()
            assert(style:height() == 1 and style:getlen("a") == 2 and style:getlen_h("a", 3) == 3)
            style:setstyle("a")
            assert(style:getfactor() == 5)
        end)");
    scriptor.setGlibTextstyle(style->get());
    EXPECT_EQ(scriptor.callSeg("ask"), Quor::Ok);
    EXPECT_THAT(called, ElementsAre(0, 1, 2, 3, 4));
    scriptor.setGlibTextstyle(nullptr);
}

TEST(Slots, OfTheLoadFileCallbackIsTheFirst)
{
    const auto callback = handMade<FunctionRightAfterLoadFile>(noting<0, void, lua_State*>());
    QuorGlibScriptor scriptor;
    scriptor.setLoadFileCallbk(callback->get());
    load(scriptor, "x = 1");
    EXPECT_THAT(called, ElementsAre(0));
}

/// A visitor of arguments and attributes. Slots 0 and 1 are its destructor's.
auto visitor()
{
    using Polyline = std::vector<QuorPolyDesc>;
    return handMade<PrimaryAttributeVisitor>(
        noting<0, void>(), noting<1, void>(), noting<2, void, double>(), noting<3, void, int>(),
        noting<4, void, bool>(), noting<5, void, const std::string&>(), noting<6, void, const KxGePoint3D&>(),
        noting<7, void, const KxGeVector3D&>(), noting<8, void, const Polyline&>(),
        noting<9, void, const std::vector<Polyline>&>(), noting<10, void, const std::vector<KxGePoint3D>&>(),
        noting<11, void, const std::vector<KVParams>&>(), noting<12, void, const char*>(),
        noting<13, void>());
}

const KxGePoint3D origin;
const KxGePoint3D unit(1, 0, 0);
const KxGeVector3D xAxis(1, 0, 0);
const KxGeVector3D yAxis(0, 1, 0);
const KxGeVector3D zAxis(0, 0, 1);

std::vector<QuorPolyDesc> triangle(double size)
{
    return {{0, 0, 0, 0, {0, 0, 0}}, {0, 0, 0, 0, {size, 0, 0}}, {0, 0, 0, 0, {0, size, 0}}};
}

/// The slots of the visitor that a primitive's arguments go to.
std::vector<int> argumentSlots(const QuorPrimary* made)
{
    const std::unique_ptr<const QuorPrimary> primitive(made);
    const auto seeing = visitor();
    EXPECT_TRUE(primitive);
    if (primitive) primitive->visitArguments(*seeing->get());
    return called;
}

TEST(Slots, OfTheVisitorTakeTheirShapesOfArguments)
{
    EXPECT_THAT(argumentSlots(createQuorGraphy3DBox(1, 2, 3, origin, xAxis, yAxis, false, 1)),
                ElementsAre(2, 2, 2, 6, 7, 7, 4, 3));
    EXPECT_THAT(argumentSlots(createQuorText(1, origin, "DN50", 0.0)), ElementsAre(3, 6, 5, 2));
    EXPECT_THAT(argumentSlots(createQuorGraphy3DPolygon(origin, zAxis, xAxis, yAxis, 5, triangle(10),
                                                        {triangle(1)}, 32, false, 1)),
                testing::IsSupersetOf({8, 9}));
    EXPECT_THAT(argumentSlots(createQuorPline2D(triangle(10), 0.0)), ElementsAre(8, 2));
    EXPECT_THAT(argumentSlots(createQuorLineArr({origin, unit}, true)), ElementsAre(10, 4));
    EXPECT_THAT(argumentSlots(new QuorOprKVParamArray), ElementsAre(11));
}

TEST(Slots, OfTheVisitorTakeNamesAndWhatIsNotSet)
{
    const std::unique_ptr<QuorPrimary> box(createQuorGraphy3DBox(1, 2, 3, origin, xAxis, yAxis, false, 1));
    box->setColor(3);
    const auto seeing = visitor();
    box->visitAttributes(*seeing->get());
    EXPECT_THAT(called, ElementsAre(12, 3, 12, 13)) << "a colour, and no material";
}

/// Calls the function in a slot of an object that the library made.
template<class Result, class... Arguments>
Result callSlot(const void* object, std::size_t slot, Arguments... arguments)
{
    const Function* slots = nullptr;
    std::memcpy(&slots, object, sizeof slots);
    const auto function = reinterpret_cast<Result (*)(const void*, Arguments...)>(slots[slot]);
    return function(object, arguments...);
}

TEST(Slots, OfAPrimitiveVisitAndFreeIt)
{
    QuorPrimary* line = createQuorLine(origin, unit);
    const auto seeing = visitor();
    callSlot<void, PrimaryVisitor&>(line, 2, *seeing->get());
    EXPECT_THAT(called, ElementsAre(6, 6)) << "its arguments";
    called.clear();
    callSlot<void, PrimaryAttributeVisitor&>(line, 3, *seeing->get());
    EXPECT_THAT(called, ElementsAre(12, 13, 12, 13, 12, 13, 12, 13)) << "its attributes";
    callSlot<void>(line, 1);
}

TEST(Slots, OfAnOperationAnswerWhatItIs)
{
    const std::unique_ptr<QuorOprPrimary> operation(createQuorPrimaryBooleanOpr(2, 17, 18));
    EXPECT_EQ(callSlot<int>(operation.get(), 4), 2) << "the operation";
    EXPECT_EQ(callSlot<int>(operation.get(), 5), 17) << "the main element";
}

} // namespace
