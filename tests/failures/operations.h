#pragma once

#include "../scriptor/scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>
#include <memory>

/// The exported operations as rows of a table, for tests that let each of them fail wherever it can.
namespace failures {

/// Slots of the state that every operation finds, above the "glib" table.
enum Slot { Data = 2, Place, Places, Ids, Texts, Vertices, Matrix, Target, top = Target };

/// What an operation works on and where it puts what it reads. Every output holds a value of its own at the
/// start, which no script gives: so it is seen whether it was left, read, or half read.
struct Setting {
    Setting();
    ~Setting();
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

    /// Brings the stack to its first height, and the outputs to their first values.
    void begin();
    /// Frees what the outputs hold.
    void freeOutputs();
    /// Whether the state still answers a call.
    bool isUsable();
    /// Whether an expression is true in a state.
    static bool holds(lua_State* state, const char* expression);

    QuorGlibScriptor scriptor;
    lua_State* L; ///< of the scriptor
    /// For operations that make or lose a state.
    std::unique_ptr<QuorGlibScriptor> other;
    std::unique_ptr<QuorGlibScriptorHelper> helper;

    KxGePoint3D point;
    KxGePoint3D second;
    KxGeVector3D vector;
    KxGeMatrix3D matrix;
    KxDbObjectId id;
    std::vector<KxGePoint3D> points;
    std::vector<KxDbObjectId> ids;
    std::vector<std::string> texts;
    std::vector<QuorPolyDesc> vertices;
    std::vector<KVParams> records;
    std::vector<Keypoint> keypoints;
    std::vector<QuorPrimary*> primitives;
    std::string text;
    int number = 0;
    bool flag = false;
};

/// What is seen of an operation's outputs.
enum class Seen { Old, Part, Whole, Wrong };

/// What an operation says of them by its result.
enum class Says {
    All,    ///< success is the whole, failure nothing
    Part,   ///< success is the whole; failure may leave a part
    Little, ///< success may leave a part as well
    Nothing ///< there is no result
};

struct Operation {
    /// The beginning of its line in the list of exports, enough to tell it from all others.
    const char* name;
    Says says;
    /// True where its result says that it succeeded.
    bool (*call)(Setting&);
    Seen (*look)(Setting&);
    /// What it leaves on the stack when it succeeds, and at most when it does not.
    int left = 0;
    int leftOnFailure = 0;
    /// What is done before, with all the memory there is.
    void (*prepare)(Setting&) = nullptr;
    /// Whether it makes a state: a walk then begins where the standard libraries are open.
    bool makesState = false;
};

std::vector<Operation> marshallingOperations();
std::vector<Operation> scriptorOperations();
std::vector<Operation> allOperations();

/// A test's name for an operation.
std::string nameOf(const Operation& operation);
/// For messages of tests.
void PrintTo(const Operation& operation, std::ostream* out);

/// Checks what an operation left: the stack's height, the outputs, and what they are together with its
/// result.
void checkLeft(Setting& setting, const Operation& operation, bool succeeded);

} // namespace failures
