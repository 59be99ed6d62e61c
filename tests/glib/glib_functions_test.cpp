#include "glib_functions.h"

#include <QuorPureScriptor/lua_tinker.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(GlibFunctions, AskTheHostOnceAndGiveItsAnswer)
{
    for (const Question& question : questions) {
        functor.calls.clear();
        EXPECT_EQ(answer(question.call), question.answer) << question.call;
        EXPECT_THAT(functor.calls, ElementsAre(question.reaches)) << question.call;
    }
}

TEST_F(GlibFunctions, GiveNothingWhenTheHostHasNoAnswer)
{
    functor.manner = FunctorOfTest::Manner::Refusing;
    for (const Question& question : questions) {
        functor.calls.clear();
        EXPECT_EQ(answer(question.call), noAnswer) << question.call;
        EXPECT_THAT(functor.calls, ElementsAre(question.reaches)) << question.call;
    }
}

TEST_F(GlibFunctions, GiveNothingWhenTheHostThrows)
{
    functor.manner = FunctorOfTest::Manner::Throwing;
    for (const Question& question : questions) {
        functor.calls.clear();
        EXPECT_EQ(answer(question.call), noAnswer) << question.call;
        EXPECT_THAT(functor.calls, ElementsAre(question.reaches)) << question.call;
    }
    functor.manner = FunctorOfTest::Manner::Answering;
    EXPECT_EQ(answer("getPsView()"), vectorAnswer);
}

TEST_F(GlibFunctions, GiveNothingForANullObjectPointer)
{
    functor.object = nullptr;
    EXPECT_EQ(answer("getCurrentObjectPointer()"), noAnswer);
    EXPECT_THAT(functor.calls, ElementsAre("getCurrentObjectPointer()"));
}

TEST_F(GlibFunctions, GiveTheObjectPointerAsALightUserdata)
{
    int object = 0;
    functor.object = &object;
    run("return glib.getCurrentObjectPointer()", 1);
    EXPECT_EQ(lua_type(state(), -1), LUA_TLIGHTUSERDATA);
    EXPECT_EQ(lua_touserdata(state(), -1), &object);
    lua_pop(state(), 1);
}

TEST_F(GlibFunctions, GiveTheObjectIdInAllItsBits)
{
    using Limits = std::numeric_limits<long long>;
    const std::pair<long long, const char*> ids[] = {{Limits::max(), "9223372036854775807"},
                                                     {Limits::min(), "-9223372036854775808"},
                                                     {(1LL << 53) + 1, "9007199254740993"},
                                                     {-1, "-1"},
                                                     {0, "0"}};
    for (const auto& [id, text] : ids) {
        functor.id = id;
        run("return glib.getCurrentObjectId()", 1);
        EXPECT_TRUE(lua_tinker::is_int64(state(), -1)) << text;
        EXPECT_EQ(lua_tinker::read_int64(state(), -1), id);
        lua_pop(state(), 1);
        EXPECT_EQ(shown("glib.getCurrentObjectId()"), text);
    }
}

TEST_F(GlibFunctions, GiveInfinitiesAndNotANumberAsTheyAre)
{
    using Limits = std::numeric_limits<double>;
    functor.point = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()};
    functor.vector = {Limits::max(), Limits::denorm_min(), 0};
    functor.matrix(3, 0) = -Limits::infinity();
    // Which sign not-a-number has is the engine's.
    EXPECT_THAT(answer("getIsoPoint(1)"), testing::AnyOf("1: {nan, inf, -inf}", "1: {-nan, inf, -inf}"));
    EXPECT_EQ(shown("glib.getDefaultMat()[4][1]"), "-inf");
    run("return unpack(glib.getPsView())", 3);
    EXPECT_EQ(lua_tonumber(state(), -3), Limits::max());
    EXPECT_EQ(lua_tonumber(state(), -2), Limits::denorm_min());
    lua_pop(state(), 3);
}

TEST_F(GlibFunctions, GiveNewTablesEachTime)
{
    run("first = glib.getDefaultIsoMat(); first[1][1] = 0; first[5] = 5; point = glib.getIsoPoint(1); "
        "point[1] = 0");
    EXPECT_EQ(answer("getDefaultIsoMat()"), matrixAnswer);
    EXPECT_EQ(answer("getIsoPoint(1)"), pointAnswer);
    EXPECT_EQ(shown("getmetatable(first) or getmetatable(first[1]) or getmetatable(point)"), "nil");
}

// How a number arrives where the host takes an int, and where it takes 16 bits.
struct Narrowing {
    const char* number;
    const char* asInt;
    const char* asShort;
};
constexpr Narrowing narrowings[] = {
    {"0", "0", "0"},
    {"65535", "65535", "65535"},
    {"65536", "65536", "0"},
    {"70000", "70000", "4464"},
    {"-1", "-1", "65535"},
    {"-70000", "-70000", "61072"},
    {"1.9", "1", "1"},
    {"-1.9", "-1", "65535"},
    {"0.999", "0", "0"},
    {"2147483647", "2147483647", "65535"},
    {"2147483648", "-2147483648", "0"},
    {"-2147483649", "2147483647", "65535"},
    {"2^32 + 5", "5", "5"},
    {"-2^63", "0", "0"},
    {"2^63", "0", "0"},
    {"1e300", "0", "0"},
    {"0/0", "0", "0"},
    {"1/0", "0", "0"},
    {"-1/0", "0", "0"},
};

TEST_F(GlibFunctions, CutNumbersToTheHostsInteger)
{
    for (const Narrowing& row : narrowings) {
        const std::string number = row.number;
        const std::string whole = row.asInt;
        EXPECT_EQ(reached("getIsoPoint(" + number + ")"), "getIsoPoint(" + whole + ")") << number;
        EXPECT_EQ(reached("getRefIsoMat(" + number + ", " + number + ")"),
                  "getRefIsoMat(" + whole + ", " + whole + ")")
            << number;
    }
}

TEST_F(GlibFunctions, NarrowNumbersToSixteenBitsWhereTheHostTakesThose)
{
    for (const Narrowing& row : narrowings) {
        const std::string number = row.number;
        const std::string low = row.asShort;
        EXPECT_EQ(reached("getArcIsoMat(" + number + ", 0, 1)"), "getArcIsoMat(" + low + ", 1, 0)");
        EXPECT_EQ(reached("getArcIsoMat(0, " + number + ", 1)"), "getArcIsoMat(0, 1, " + low + ")");
        EXPECT_EQ(reached("getArcIsoMat(0, 1, " + number + ")"), "getArcIsoMat(0, " + low + ", 1)");
        EXPECT_EQ(reached("getNormalIsoMat(" + number + ", 1)"), "getNormalIsoMat(" + low + ", 1)");
        EXPECT_EQ(reached("getNormalIsoMat(1, " + number + ")"), "getNormalIsoMat(1, " + low + ")");
        EXPECT_EQ(reached("getNormalIsoMat(" + number + ", 1, 2, " + number + ")"),
                  "getNormalIsoMat4(" + low + ", 1, 2, " + low + ")");
        EXPECT_EQ(reached("getNormalIsoMat(1, " + number + ", " + number + ", 2)"),
                  "getNormalIsoMat4(1, " + low + ", " + low + ", 2)");
        EXPECT_EQ(reached("getIsoVgdir(" + number + ", 3)"), "getIsoVgdir(" + low + ", 3)");
        EXPECT_EQ(reached("getIsoVgdir(3, " + number + ")"), "getIsoVgdir(3, " + low + ")");
    }
}

/// Values that are no integers, a text of digits and a 64-bit integer among them.
constexpr const char* noIntegers[] = {"'5'",  "'x'",      "''",         "nil",
                                      "true", "{}",       "{5}",        "print",
                                      "glib", "int64(5)", "newproxy()", "coroutine.create(shape)"};

TEST_F(GlibFunctions, DoNotAskTheHostWithAnArgumentThatIsNoInteger)
{
    for (const std::string wrong : noIntegers) {
        const std::string calls[] = {
            "getArcIsoMat(" + wrong + ", 2, 3)",       "getArcIsoMat(1, " + wrong + ", 3)",
            "getArcIsoMat(1, 2, " + wrong + ")",       "getNormalIsoMat(" + wrong + ", 2)",
            "getNormalIsoMat(1, " + wrong + ")",       "getNormalIsoMat(" + wrong + ", 2, 3, 4)",
            "getNormalIsoMat(1, " + wrong + ", 3, 4)", "getNormalIsoMat(1, 2, " + wrong + ", 4)",
            "getNormalIsoMat(1, 2, 3, " + wrong + ")", "getIsoPoint(" + wrong + ")",
            "getIsoVgdir(" + wrong + ", 2)",           "getIsoVgdir(1, " + wrong + ")"};
        for (const std::string& call : calls)
            EXPECT_EQ(answer(call), noAnswer) << call;
    }
    EXPECT_THAT(functor.calls, IsEmpty());
}

TEST_F(GlibFunctions, ReadAReferenceMatrixsMissingArgumentsAsZeroAndMinusOne)
{
    EXPECT_EQ(reached("getRefIsoMat()"), "getRefIsoMat(0, -1)");
    EXPECT_EQ(reached("getRefIsoMat(3)"), "getRefIsoMat(3, -1)");
    EXPECT_EQ(reached("getRefIsoMat(3, 4)"), "getRefIsoMat(3, 4)");
    EXPECT_EQ(reached("getRefIsoMat(3, 4, 5)"), "getRefIsoMat(3, 4)");
    for (const std::string wrong : noIntegers) {
        EXPECT_EQ(reached("getRefIsoMat(" + wrong + ", 4)"), "getRefIsoMat(0, 4)") << wrong;
        EXPECT_EQ(reached("getRefIsoMat(3, " + wrong + ")"), "getRefIsoMat(3, -1)") << wrong;
        EXPECT_EQ(reached("getRefIsoMat(" + wrong + ")"), "getRefIsoMat(0, -1)") << wrong;
    }
}

TEST_F(GlibFunctions, TakeOnlyTheirOwnCountsOfArguments)
{
    struct Row {
        const char* function;
        std::vector<int> counts;
    };
    const Row rows[] = {
        {"getArcIsoMat", {3, 4, 5, 6}},
        {"getNormalIsoMat", {2, 4}},
        {"getDefaultIsoMat", {0, 1, 2, 3, 4, 5, 6}},
        {"getDefaultMat", {0, 1, 2, 3, 4, 5, 6}},
        {"getRefIsoMat", {0, 1, 2, 3, 4, 5, 6}},
        {"getIsoPoint", {1}},
        {"getIsoVgdir", {2}},
        {"getCurrentObjectId", {0, 1, 2, 3, 4, 5, 6}},
        {"getCurrentObjectPointer", {0, 1, 2, 3, 4, 5, 6}},
        {"getPsView", {0, 1, 2, 3, 4, 5, 6}},
        {"getCurrentTxtstyle", {0, 1, 2, 3, 4, 5, 6}},
    };
    for (const Row& row : rows) {
        std::vector<int> taken;
        std::string arguments;
        for (int count = 0; count <= 6; ++count) {
            functor.calls.clear();
            const std::string given = answer(std::string(row.function) + "(" + arguments + ")");
            if (given != noAnswer)
                taken.push_back(count);
            else
                EXPECT_THAT(functor.calls, IsEmpty()) << row.function << " with " << count;
            arguments += (count == 0 ? "" : ", ") + std::to_string(count + 1);
        }
        EXPECT_EQ(taken, row.counts) << row.function;
    }
}

TEST_F(GlibFunctions, CountNilAsAnArgument)
{
    for (const char* call : {"getIsoPoint(1, nil)", "getIsoVgdir(1, 2, nil)", "getNormalIsoMat(1, 2, nil)",
                             "getNormalIsoMat(1, 2, nil, nil)", "getArcIsoMat(1, 2, nil)"})
        EXPECT_EQ(answer(call), noAnswer) << call;
    EXPECT_THAT(functor.calls, IsEmpty());
    EXPECT_EQ(reached("getNormalIsoMat(1, 2, 3, 4, nil)"), "");
    EXPECT_EQ(reached("getArcIsoMat(1, 2, 3, nil)"), "getArcIsoMat(1, 3, 2)");
}

TEST_F(GlibFunctions, SetkptDoesNothing)
{
    run("place = {1, 2, 3}; function keypoint() glib.setkpt(1, place) end");
    for (const char* call :
         {"setkpt(1, place)", "setkpt()", "setkpt('1', 2)", "setkpt(1)", "setkpt(1, {}, 3)"})
        EXPECT_EQ(answer(call), noAnswer) << call;
    EXPECT_EQ(shown("shape(place)"), "{1, 2, 3}");
    std::vector<Keypoint> keypoints;
    EXPECT_EQ(scriptor.getKeypoints(keypoints), Quor::Ok);
    EXPECT_THAT(keypoints, IsEmpty());
    EXPECT_THAT(functor.calls, IsEmpty());
}

} // namespace
