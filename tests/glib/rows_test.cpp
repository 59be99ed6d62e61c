#include "Kinds.h"
#include "kind_cases.h"

#include <cctype>
#include <set>

// The table of kinds must read true to whoever explains records by it: what its rows say is compared with
// what the parser does.

namespace {

namespace glib = quorlua::glib;

struct FieldOfRow {
    std::string name;
    std::string letter;
    bool optional;
};

struct Row {
    int code;
    std::string name;
    glib::Length length;
    std::vector<FieldOfRow> fields;
    std::string factory;
};

template<class Fields>
std::vector<FieldOfRow> listed(const Fields& fields)
{
    return std::apply(
        [](const auto&... field) {
            return std::vector<FieldOfRow>{
                {field.name, std::decay_t<decltype(field)>::FieldType::letter, field.optional}...};
        },
        fields);
}

std::vector<Row> primitiveRows()
{
    return std::apply(
        [](const auto&... row) {
            return std::vector<Row>{{row.code, row.name, row.length, listed(row.fields), row.factory}...};
        },
        glib::primitiveKinds);
}

std::vector<Row> attributeRows()
{
    return std::apply(
        [](const auto&... row) {
            return std::vector<Row>{{row.code, row.name, glib::atLeast(1), listed(row.fields), ""}...};
        },
        glib::attributeKinds);
}

std::vector<Row> allRows()
{
    std::vector<Row> rows = primitiveRows();
    for (const Row& row : attributeRows())
        rows.push_back(row);
    rows.push_back({glib::groupKind.code, glib::groupKind.name, glib::groupKind.length,
                    listed(glib::groupKind.fields), ""});
    return rows;
}

TEST(Rows, NameEveryKindOnce)
{
    std::set<int> codes;
    std::set<std::string> names;
    for (const Row& row : allRows()) {
        EXPECT_TRUE(codes.insert(row.code).second) << row.code;
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_FALSE(row.name.empty());
    }
    std::set<int> expected = {40, 41, 200, 300, 400, 500, 600, 700};
    for (int code = 2; code <= 32; ++code)
        expected.insert(code);
    EXPECT_EQ(codes, expected);
}

TEST(Rows, PutRequiredFieldsBeforeOptionalOnesAndCountThem)
{
    for (const Row& row : allRows()) {
        SCOPED_TRACE(row.code);
        int required = 0;
        std::set<std::string> names;
        for (const FieldOfRow& field : row.fields) {
            EXPECT_TRUE(names.insert(field.name).second) << field.name;
            if (field.optional) continue;
            ++required;
            EXPECT_EQ(static_cast<std::size_t>(required), names.size())
                << field.name << " follows an optional field";
        }
        EXPECT_EQ(row.length.number, required + 1);
        if (row.length.rule == glib::Length::Exactly) {
            EXPECT_EQ(static_cast<int>(row.fields.size()), required);
        }
    }
}

TEST(Rows, ReportOfEllipsesAndOperationsOnly)
{
    std::apply(
        [](const auto&... row) {
            const auto check = [](const auto& kind) {
                const bool reports = kind.code == 31 || kind.code == 41;
                EXPECT_EQ(kind.length.message != nullptr, reports) << kind.code;
            };
            (check(row), ...);
        },
        glib::primitiveKinds);
}

TEST(Rows, LengthsAllowWhatTheySay)
{
    EXPECT_FALSE(glib::atLeast(3).allows(2));
    EXPECT_TRUE(glib::atLeast(3).allows(3));
    EXPECT_TRUE(glib::atLeast(3).allows(4));
    EXPECT_FALSE(glib::exactly(3).allows(2));
    EXPECT_TRUE(glib::exactly(3).allows(3));
    EXPECT_FALSE(glib::exactly(3).allows(4));
}

class EveryRow : public testing::TestWithParam<cases::Kind> {
protected:
    Row row() const
    {
        for (const Row& candidate : primitiveRows())
            if (candidate.code == GetParam().code) return candidate;
        return {};
    }
};

TEST_P(EveryRow, HasTheLettersOfARecordThatFits)
{
    const Row found = row();
    ASSERT_GE(found.fields.size(), GetParam().required.size());
    for (std::size_t i = 0; i < GetParam().required.size(); ++i) {
        EXPECT_EQ(found.fields[i].letter, GetParam().required[i].letter) << found.fields[i].name;
        EXPECT_FALSE(found.fields[i].optional) << found.fields[i].name;
    }
    for (const cases::Option& option : GetParam().options) {
        ASSERT_LT(static_cast<std::size_t>(option.field) - 2, found.fields.size());
        const FieldOfRow& field = found.fields[static_cast<std::size_t>(option.field) - 2];
        EXPECT_EQ(field.letter, option.value.letter) << field.name;
        EXPECT_TRUE(field.optional) << field.name;
    }
    std::set<int> options;
    for (const cases::Option& option : GetParam().options)
        options.insert(option.field);
    EXPECT_EQ(found.fields.size(), GetParam().required.size() + options.size());
}

/// A token of the factory's text, a letter and the field's number or a field's name, as the primitive would
/// print its value; other words stand for themselves.
std::string valueOf(const std::string& token, const Row& row, const cases::Kind& example)
{
    if (const auto found = example.defaults.find(token); found != example.defaults.end())
        return found->second;
    for (std::size_t i = 0; i < example.required.size() && i < row.fields.size(); ++i) {
        const std::string& letter = example.required[i].letter;
        const std::string numbered = letter.substr(0, letter.find(' ')) + std::to_string(i + 2);
        if (token == numbered || token == row.fields[i].name) return cases::shownAs(example.required[i].lua);
    }
    return token;
}

TEST_P(EveryRow, SaysWhichFactoryIsCalledWithWhat)
{
    const Row found = row();
    const std::string call = found.factory.substr(0, found.factory.find(';'));
    ASSERT_EQ(call.back(), ')') << call;
    if (GetParam().code == 200) {
        EXPECT_EQ(call, "QuorOprKVParamArray()") << "made empty, then given its parameters";
        return;
    }
    const std::size_t open = call.find('(');
    std::string made = call.substr(0, open);
    std::string token;
    for (const char letter : call.substr(open)) {
        if (std::isalnum(static_cast<unsigned char>(letter))) {
            token += letter;
            continue;
        }
        made += valueOf(token, found, GetParam()) + letter;
        token.clear();
    }
    const std::string& printed = GetParam().made;
    EXPECT_EQ(made, printed.substr(0, made.size()));
    EXPECT_TRUE(printed.size() == made.size() || printed[made.size()] == ' ') << printed;
}

INSTANTIATE_TEST_SUITE_P(Rows, EveryRow, testing::ValuesIn(cases::all()),
                         [](const auto& test) { return "Code" + std::to_string(test.param.code); });

} // namespace
