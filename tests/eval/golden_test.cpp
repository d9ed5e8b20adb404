// The static values of the golden list.
#include "eval_support.h"
#include "support/test_data.h"

#include <fstream>
#include <sstream>
#include <string>

struct GoldenValue {
    std::string fen;
    i32 value;
    i32 kingDanger;
    i32 easyVal;
    i32 sufficientMaterial;
};

static std::vector<GoldenValue> readGoldenValues() {
    std::ifstream file(testDataPath("golden/eval.txt"));
    std::vector<GoldenValue> values;
    std::string line;
    while (std::getline(file, line)) {
        GoldenValue golden{};
        golden.fen = line.substr(std::strlen("fen "));
        std::getline(file, line);
        std::istringstream fields(line);
        std::string name;
        fields >> name >> golden.value >> name >> golden.kingDanger >> name >> golden.easyVal >> name >>
            golden.sufficientMaterial;
        EXPECT_FALSE(fields.fail()) << line;
        values.push_back(golden);
    }
    return values;
}

TEST(Golden, StaticValuesAreMetToTheUnit) {
    const std::vector<GoldenValue> values = readGoldenValues();
    ASSERT_EQ(values.size(), 631U);
    for (const GoldenValue& golden : values) {
        SCOPED_TRACE(golden.fen);
        setUp(golden.fen.c_str());
        EXPECT_EQ(i32{easyVal()}, golden.easyVal);
        EXPECT_EQ(i32{board->psqScore}, golden.easyVal);
        EXPECT_EQ(sufficientMaterial(), golden.sufficientMaterial);
        EXPECT_EQ(i32{evaluate()}, golden.value);
        EXPECT_EQ(EngineOptions.kingDanger, golden.kingDanger);
    }
}
