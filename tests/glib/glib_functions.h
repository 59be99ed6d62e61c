#pragma once

#include "../scriptor/scriptor_fixture.h"

#include <initializer_list>
#include <limits>
#include <stdexcept>

/// A host object that notes each question with its arguments and answers all of them, or none.
class FunctorOfTest final : public GlibScriptFunctor {
public:
    enum class Manner { Answering, Refusing, Throwing };

    bool getCurrentObjectId(KxDbObjectId& given) const override
    {
        given.setId(id);
        return note("getCurrentObjectId", {});
    }
    bool getIsoPoint(int number, KxGePoint3D& given) const override
    {
        given = point;
        return note("getIsoPoint", {number});
    }
    bool getDefaultIsoMat(KxGeMatrix3D& given) const override
    {
        given = matrix;
        return note("getDefaultIsoMat", {});
    }
    bool getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& given) const override
    {
        given = vector;
        return note("getIsoVgdir", {a, b});
    }
    bool getNormalIsoMat4(unsigned short a, unsigned short b, unsigned short c, unsigned short d,
                          KxGeMatrix3D& given) const override
    {
        given = matrix;
        return note("getNormalIsoMat4", {a, b, c, d});
    }
    bool getNormalIsoMat(unsigned short a, unsigned short b, KxGeMatrix3D& given) const override
    {
        given = matrix;
        return note("getNormalIsoMat", {a, b});
    }
    bool getArcIsoMat(unsigned short a, unsigned short b, unsigned short c,
                      KxGeMatrix3D& given) const override
    {
        given = matrix;
        return note("getArcIsoMat", {a, b, c});
    }
    bool getRefIsoMat(KxGeMatrix3D& given, int a, int b) const override
    {
        given = matrix;
        return note("getRefIsoMat", {a, b});
    }
    void* getCurrentObjectPointer() const override
    {
        return note("getCurrentObjectPointer", {}) ? object : nullptr;
    }
    bool getPsView(KxGeVector3D& given) const override
    {
        given = vector;
        return note("getPsView", {});
    }

    Manner manner = Manner::Answering;
    long long id = 42;
    KxGePoint3D point{1.25, -2.5, 1e10};
    KxGeVector3D vector{0, 0.5, -1};
    KxGeMatrix3D matrix = countedMatrix();
    void* object = this;
    /// The questions so far, as "getIsoPoint(7)".
    mutable std::vector<std::string> calls;

private:
    static KxGeMatrix3D countedMatrix()
    {
        KxGeMatrix3D counted;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                counted(row, column) = 10 * (row + 1) + column + 1.5;
        return counted;
    }
    bool note(const char* operation, std::initializer_list<int> arguments) const
    {
        std::string call = std::string(operation) + '(';
        for (const int argument : arguments) {
            if (!call.ends_with('(')) call += ", ";
            call += std::to_string(argument);
        }
        calls.push_back(call + ')');
        if (manner == Manner::Throwing) throw std::runtime_error("the host has a bad day");
        return manner == Manner::Answering;
    }
};

/// What the answers of a FunctorOfTest look like: how many results, and what they hold.
inline const std::string noAnswer = "0: ";
inline const std::string pointAnswer = "1: {1.25, -2.5, 10000000000}";
inline const std::string vectorAnswer = "1: {0, 0.5, -1}";
inline const std::string matrixAnswer = "1: {{11.5, 12.5, 13.5, 14.5}, {21.5, 22.5, 23.5, 24.5}, "
                                        "{31.5, 32.5, 33.5, 34.5}, {41.5, 42.5, 43.5, 44.5}}";
inline const std::string userdataAnswer = "1: userdata";

/// A call of each function that asks the host's object, and by which operation it reaches it with what
/// answer. Of the two functions with two forms, both.
struct Question {
    const char* call;
    const char* reaches;
    std::string answer;
};
inline const Question questions[] = {
    {"getArcIsoMat(1, 2, 3)", "getArcIsoMat(1, 3, 2)", matrixAnswer},
    {"getNormalIsoMat(1, 2)", "getNormalIsoMat(1, 2)", matrixAnswer},
    {"getNormalIsoMat(1, 2, 3, 4)", "getNormalIsoMat4(1, 2, 3, 4)", matrixAnswer},
    {"getDefaultIsoMat()", "getDefaultIsoMat()", matrixAnswer},
    {"getDefaultMat()", "getDefaultIsoMat()", matrixAnswer},
    {"getRefIsoMat(5, 6)", "getRefIsoMat(5, 6)", matrixAnswer},
    {"getIsoPoint(7)", "getIsoPoint(7)", pointAnswer},
    {"getIsoVgdir(1, 2)", "getIsoVgdir(1, 2)", vectorAnswer},
    {"getCurrentObjectId()", "getCurrentObjectId()", userdataAnswer},
    {"getCurrentObjectPointer()", "getCurrentObjectPointer()", userdataAnswer},
    {"getPsView()", "getPsView()", vectorAnswer},
};

/// A scriptor whose script has a host object and a text style. Its "answers" shows how many values it is
/// given and what they hold, a table with as many entries as it has keys. No test may make anything be
/// reported.
class GlibFunctions : public Scriptor {
protected:
    GlibFunctions()
    {
        run("function shape(value)"
            "  if type(value) == 'number' then return textOf(value) end"
            "  if type(value) ~= 'table' then return type(value) end"
            "  local keys, texts = 0, {}"
            "  for _ in pairs(value) do keys = keys + 1 end"
            "  for key = 1, keys do texts[key] = shape(value[key]) end"
            "  return '{' .. table.concat(texts, ', ') .. '}' "
            "end "
            "function answers(...)"
            "  local texts = {}"
            "  for at = 1, select('#', ...) do texts[at] = shape((select(at, ...))) end"
            "  return select('#', ...) .. ': ' .. table.concat(texts, ' ') "
            "end");
        scriptor.setFunction(&functor);
        scriptor.setGlibTextstyle(&style);
    }
    void TearDown() override
    {
        EXPECT_THAT(alerts, testing::IsEmpty());
        EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
        scriptor.setFunction(nullptr);
        scriptor.setGlibTextstyle(nullptr);
        Scriptor::TearDown();
    }

    /// What a call of a "glib" function gives.
    std::string answer(const std::string& call) { return shown("answers(glib." + call + ")"); }

    /// The operation that a call of a "glib" function reaches the host with; "" for none.
    std::string reached(const std::string& call)
    {
        functor.calls.clear();
        answer(call);
        EXPECT_LE(functor.calls.size(), 1u) << call;
        return functor.calls.empty() ? "" : functor.calls[0];
    }

    void setPointer(const char* global, const void* pointer)
    {
        lua_pushlightuserdata(state(), const_cast<void*>(pointer));
        lua_setglobal(state(), global);
    }

    static constexpr const char* functorGlobal = "_glib_pass_functor_pointer";
    static constexpr const char* styleGlobal = "_glib_pass_txtstyle_pointer";

    FunctorOfTest functor;
    StyleOfTest style;
};
