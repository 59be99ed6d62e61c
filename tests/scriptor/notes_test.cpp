#include "scriptor_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Notes : public Scriptor {
protected:
    int read(const char* table, std::vector<KVParams>& list)
    {
        return kept([&] { return static_cast<int>(scriptor.getParams_note(table, list)); });
    }
    int readStd(const char* table, std::vector<KVParams>& list)
    {
        return kept([&] { return static_cast<int>(scriptor.getParams_std(table, list)); });
    }

    std::vector<KVParams> records;
};

TEST_F(Notes, AreReadWithTheirValues)
{
    run("notes = {P1 = {'length', 100}, P2 = {'name', 'DN50'}, P3 = {'flag', true}, P4 = {'none'},"
        " P5 = {'digits', '12'}, P6 = {'table', {}}}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_THAT(records, UnorderedElementsAre(KVParams{"P1", "length", KVValue::ofDouble(100)},
                                              KVParams{"P2", "name", KVValue::ofString("DN50")},
                                              KVParams{"P3", "flag", {}}, KVParams{"P4", "none", {}},
                                              KVParams{"P5", "digits", KVValue::ofString("12")},
                                              KVParams{"P6", "table", {}}));
}

TEST_F(Notes, SkipAnAngleThatIsNoTable)
{
    run("notes = {angle = 30, P1 = {'a note text', 100}}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_THAT(records, ElementsAre(KVParams{"P1", "a note text", KVValue::ofDouble(100)}));
    records.clear();
    run("notes = {angle = {'bend', 30}}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_THAT(records, ElementsAre(KVParams{"angle", "bend", KVValue::ofDouble(30)}));
    for (const char* value : {"'text'", "true", "print"}) {
        run(std::string("notes = {angle = ") + value + "}");
        EXPECT_EQ(read("notes", records), Quor::Ok) << value;
    }
    EXPECT_EQ(records.size(), 1u);
}

TEST_F(Notes, OfAnotherShapeAreRefused)
{
    for (const char* table :
         {"{P1 = 100}", "{P1 = 'text'}", "{P1 = true}", "{Angle = 30}", "{P1 = {}}", "{P1 = {5, 100}}",
          "{P1 = {nil, 100}}", "{P1 = {{}, 100}}", "{angle = {5}}", "{100}"}) {
        run(std::string("notes = ") + table);
        EXPECT_EQ(read("notes", records), Quor::ScriptFailed) << table;
        EXPECT_THAT(records, IsEmpty()) << table;
    }
}

TEST_F(Notes, ReadBeforeABadOneStayInTheList)
{
    run("notes = {{'first', 1}, {'second', 2}, 5, {'fourth', 4}}");
    records = {{"before", "", {}}};
    EXPECT_EQ(read("notes", records), Quor::ScriptFailed);
    EXPECT_THAT(records, ElementsAre(KVParams{"before", "", {}}, KVParams{"1", "first", KVValue::ofDouble(1)},
                                     KVParams{"2", "second", KVValue::ofDouble(2)}));
    EXPECT_EQ(shown("type(next(notes))"), "number") << "the script's keys are left as they are";
}

TEST_F(Notes, AreAppended)
{
    run("notes = {P1 = {'n', 1}}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_EQ(records.size(), 2u);
    run("notes = {}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_EQ(records.size(), 2u);
}

TEST_F(Notes, MayHaveKeysOfAnyType)
{
    run("notes = {[true] = {'flag', 1}, [1.5] = {'number', 2}, [print] = {'task', 3}}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_THAT(records, UnorderedElementsAre(KVParams{"", "flag", KVValue::ofDouble(1)},
                                              KVParams{"1.5", "number", KVValue::ofDouble(2)},
                                              KVParams{"", "task", KVValue::ofDouble(3)}));
}

TEST_F(Notes, AreBytes)
{
    run("notes = {['k\\0y'] = {'a\\0b', 'c\\0\\255'}}");
    EXPECT_EQ(read("notes", records), Quor::Ok);
    EXPECT_THAT(records, ElementsAre(KVParams{std::string("k\0y", 3), std::string("a\0b", 3),
                                              KVValue::ofString(std::string("c\0\xFF", 3))}));
}

TEST_F(Notes, NeedANameAndATable)
{
    EXPECT_EQ(read(nullptr, records), Quor::InvalidArgument);
    EXPECT_EQ(read("", records), Quor::InvalidArgument);
    for (const char* value : {"nil", "5", "'text'", "print"}) {
        run(std::string("notes = ") + value);
        EXPECT_EQ(read("notes", records), Quor::TableMissing) << value;
    }
    EXPECT_THAT(records, IsEmpty());
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

TEST_F(Notes, OfGetParamsAreThoseOfParam)
{
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getParams(records)); }), Quor::TableMissing);
    run("param = {P1 = {'n', 1}}");
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getParams(records)); }), Quor::Ok);
    EXPECT_THAT(records, ElementsAre(KVParams{"P1", "n", KVValue::ofDouble(1)}));
    run("param = {P1 = 1}");
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getParams(records)); }), Quor::ScriptFailed);
}

TEST_F(Notes, StandardFormReadsKeysAndValues)
{
    run("mine = {n = 1.5, s = 'text', b = true, p = {1, 2, 3}}");
    records = {{"before", "", {}}};
    EXPECT_EQ(readStd("mine", records), Quor::Ok);
    EXPECT_THAT(records,
                UnorderedElementsAre(KVParams{"before", "", {}}, KVParams{"n", "", KVValue::ofDouble(1.5)},
                                     KVParams{"s", "", KVValue::ofString("text")},
                                     KVParams{"b", "", KVValue::ofBool(true)},
                                     KVParams{"p", "", KVValue::ofPoint({1, 2, 3})}))
        << "appended to what the list held";
}

TEST_F(Notes, StandardFormNeedsATable)
{
    run("number = 5");
    for (const char* name : {static_cast<const char*>(nullptr), "", "missing", "number"})
        EXPECT_EQ(readStd(name, records), Quor::TableMissing) << (name ? name : "null");
    EXPECT_THAT(records, IsEmpty());
}

} // namespace
