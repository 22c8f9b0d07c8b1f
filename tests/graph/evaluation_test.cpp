// Evaluating inputs: values, conversions, functions, threads.
#include "tests/graph/test_nodes.h"

#include "host/base/thread_role.h"
#include "host/services/services.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

namespace velm::host::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kHighest = std::numeric_limits<int>::max();
constexpr int kLowest = std::numeric_limits<int>::min();

// A value of any type, as up to four numbers; for a material, the diffuse colour and the transparency.
struct Conversion {
    const char *name;
    int from;
    double given[4];
    int to;
    double expected[4];
};

void put(int type, const double numbers[4], void *value) {
    switch (type) {
    case kConnectInteger: *static_cast<int *>(value) = static_cast<int>(numbers[0]); break;
    case kConnectScalar:
    case kConnectFunction: *static_cast<double *>(value) = numbers[0]; break;
    case kConnectMaterial: {
        auto *material = static_cast<HostMaterial *>(value);
        *material = {};
        std::copy_n(numbers, 3, material->diffuse);
        material->specular[1] = 0.7;
        material->transparency = numbers[3];
        break;
    }
    default: std::copy_n(numbers, 3, static_cast<double *>(value));
    }
}

void expectValue(int type, const void *value, const double expected[4]) {
    switch (type) {
    case kConnectInteger: EXPECT_EQ(*static_cast<const int *>(value), static_cast<int>(expected[0])); break;
    case kConnectScalar:
    case kConnectFunction: EXPECT_DOUBLE_EQ(*static_cast<const double *>(value), expected[0]); break;
    case kConnectMaterial:
        EXPECT_DOUBLE_EQ(static_cast<const HostMaterial *>(value)->transparency, expected[3]);
        [[fallthrough]];
    default:
        for (int i = 0; i < 3; ++i) EXPECT_DOUBLE_EQ(static_cast<const double *>(value)[i], expected[i]) << i;
    }
}

const Conversion kConversions[] = {
    {"ColourToScalar", kConnectColour, {1, 0.5, 0.25}, kConnectScalar, {0.299 + 0.2935 + 0.0285}},
    {"ColourToVector", kConnectColour, {1, 0.5, 0.25}, kConnectVector, {1, 0.5, 0.25}},
    {"ColourToInteger", kConnectColour, {3, 3, 3.9}, kConnectInteger, {3}},
    {"ColourToFunction", kConnectColour, {1, 1, 1}, kConnectFunction, {1}},
    {"ColourToMaterial", kConnectColour, {1, 0.5, 0.25}, kConnectMaterial, {1, 0.5, 0.25, 0}},
    {"ScalarToColour", kConnectScalar, {0.4}, kConnectColour, {0.4, 0.4, 0.4}},
    {"ScalarToVector", kConnectScalar, {-2}, kConnectVector, {-2, -2, -2}},
    {"ScalarToInteger", kConnectScalar, {2.9}, kConnectInteger, {2}},
    {"NegativeScalarToInteger", kConnectScalar, {-2.9}, kConnectInteger, {-2}},
    {"HugeScalarToInteger", kConnectScalar, {1e300}, kConnectInteger, {kHighest}},
    {"HugeNegativeScalarToInteger", kConnectScalar, {-1e300}, kConnectInteger, {kLowest}},
    {"EndlessScalarToInteger", kConnectScalar, {INFINITY}, kConnectInteger, {kHighest}},
    {"NoNumberToInteger", kConnectScalar, {kNaN}, kConnectInteger, {0}},
    {"ScalarToFunction", kConnectScalar, {0.3}, kConnectFunction, {0.3}},
    {"ScalarToMaterial", kConnectScalar, {0.3}, kConnectMaterial, {0.3, 0.3, 0.3, 0}},
    {"VectorToScalar", kConnectVector, {0, 1, 0}, kConnectScalar, {0.587}},
    {"VectorToColour", kConnectVector, {-1, 2, 3}, kConnectColour, {-1, 2, 3}},
    {"VectorToInteger", kConnectVector, {5, 5, 5.0}, kConnectInteger, {5}},
    {"IntegerToScalar", kConnectInteger, {7}, kConnectScalar, {7}},
    {"IntegerToColour", kConnectInteger, {-7}, kConnectColour, {-7, -7, -7}},
    {"IntegerToVector", kConnectInteger, {kLowest}, kConnectVector, {kLowest, kLowest, kLowest}},
    {"IntegerToMaterial", kConnectInteger, {2}, kConnectMaterial, {2, 2, 2, 0}},
    {"MaterialToColour", kConnectMaterial, {0.1, 0.2, 0.3, 0.9}, kConnectColour, {0.1, 0.2, 0.3}},
    {"MaterialToVector", kConnectMaterial, {0.1, 0.2, 0.3, 0.9}, kConnectVector, {0.1, 0.2, 0.3}},
    {"MaterialToScalar", kConnectMaterial, {1, 0, 0, 0.9}, kConnectScalar, {0.299}},
    {"MaterialToInteger", kConnectMaterial, {4, 4, 4.0, 0.9}, kConnectInteger, {4}},
    {"MaterialToMaterial", kConnectMaterial, {0.1, 0.2, 0.3, 0.9}, kConnectMaterial, {0.1, 0.2, 0.3, 0.9}},
};

class ConversionTest : public ::testing::TestWithParam<Conversion> {};

TEST_P(ConversionTest, GivesTheOtherType) {
    HostMaterial from, to;
    put(GetParam().from, GetParam().given, &from);
    convertValue(GetParam().from, &from, GetParam().to, &to);
    expectValue(GetParam().to, &to, GetParam().expected);
}

TEST_P(ConversionTest, WorksInPlace) {
    HostMaterial value;
    put(GetParam().from, GetParam().given, &value);
    convertValue(GetParam().from, &value, GetParam().to, &value);
    expectValue(GetParam().to, &value, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, ConversionTest, ::testing::ValuesIn(kConversions),
                         [](const auto &row) { return std::string(row.param.name); });

class EvaluationTest : public GraphTest {
  protected:
    EvaluationTest() : network("Net", "Net", nullptr, nullptr) {}
    void SetUp() override {
        GraphTest::SetUp();
        addRootInputs(network);
        node = &add(network, "A");
    }
    void TearDown() override {
        network.clear();
        GraphTest::TearDown();
    }
    HostInput *rootInput(const char *name) { return network.root().findInput(name); }
    void feed(const char *output, const char *input) { network.connect("A", output, "Net", input); }

    Network network;
    HostNode *node = nullptr;
};

TEST_F(EvaluationTest, UnconnectedInputLeavesTheValueAlone) {
    double value = 42;
    EXPECT_EQ(evaluateInput(rootInput("Scalar"), &sample, &value), 0);
    EXPECT_EQ(value, 42);
}

TEST_F(EvaluationTest, ANullInputCountsAsUnconnected) {
    double value = 42;
    EXPECT_EQ(nodeInputFuncs()->evaluate(nullptr, &sample, &value), 0);
    EXPECT_EQ(nodeInputFuncs()->isConnected(nullptr), 0);
    EXPECT_EQ(value, 42);
}

TEST_F(EvaluationTest, EqualTypesWriteToTheCallersValue) {
    feed("Color", "Color");
    double value[3] = {9, 9, 9};
    EXPECT_EQ(evaluateInput(rootInput("Color"), &sample, value), 1);
    EXPECT_EQ(lastAsked().target, value);
    EXPECT_EQ(lastAsked().type, kConnectColour);
    EXPECT_EQ(value[0], 0.1);
    EXPECT_EQ(value[2], 0.3);
}

TEST_F(EvaluationTest, DifferentTypesAreConvertedAndTheNodeLearnsTheAskingType) {
    feed("Color", "Scalar");
    double value = 9;
    EXPECT_EQ(evaluateInput(rootInput("Scalar"), &sample, &value), 1);
    EXPECT_DOUBLE_EQ(value, 0.299 * 0.1 + 0.587 * 0.2 + 0.114 * 0.3);
    EXPECT_EQ(lastAsked().type, kConnectScalar);
}

TEST_F(EvaluationTest, ANodeThatSetsNothingLeavesTheValueAlone) {
    testNode(*node).silent = true;
    feed("Scalar", "Scalar");
    feed("Vector", "Integer");
    double scalar = 42;
    int integer = 43;
    EXPECT_EQ(evaluateInput(rootInput("Scalar"), &sample, &scalar), 1);
    EXPECT_EQ(evaluateInput(rootInput("Integer"), &sample, &integer), 1);
    EXPECT_EQ(scalar, 42);
    EXPECT_EQ(integer, 43);
}

TEST_F(EvaluationTest, NothingIsWrittenBeyondAValue) {
    feed("Scalar", "Integer");
    testNode(*node).scalar = 5.5;
    int values[2] = {0, 77};
    evaluateInput(rootInput("Integer"), &sample, values);
    EXPECT_EQ(values[0], 5);
    EXPECT_EQ(values[1], 77);
}

TEST_F(EvaluationTest, AFunctionTransformsTheValue) {
    testNode(*node).step = 1;
    for (const char *input : {"Function", "Scalar", "Color", "Vector", "Integer", "Material"}) feed("Function", input);
    double function = 10, scalar = 20;
    double colour[3] = {1, 2, 3}, vector[3] = {-1, 0, 0.5};
    int integer = 7;
    HostMaterial material{
        .diffuse = {1, 2, 3}, .specular = {4, 4, 4}, .reflection = {}, .refraction = {}, .transparency = 5};
    evaluateInput(rootInput("Function"), &sample, &function);
    evaluateInput(rootInput("Scalar"), &sample, &scalar);
    evaluateInput(rootInput("Color"), &sample, colour);
    EXPECT_EQ(lastAsked().type, kConnectFunction);
    evaluateInput(rootInput("Vector"), &sample, vector);
    evaluateInput(rootInput("Integer"), &sample, &integer);
    evaluateInput(rootInput("Material"), &sample, &material);
    EXPECT_EQ(function, 21);
    EXPECT_EQ(scalar, 41);
    EXPECT_EQ(colour[0], 3);
    EXPECT_EQ(colour[2], 7);
    EXPECT_EQ(vector[0], -1);
    EXPECT_EQ(vector[2], 2);
    EXPECT_EQ(integer, 15);
    EXPECT_EQ(material.diffuse[1], 5);
    EXPECT_EQ(material.specular[0], 4);
    EXPECT_EQ(material.transparency, 5);
}

TEST_F(EvaluationTest, AFunctionInputTakesAScalarUnchanged) {
    testNode(*node).scalar = 3;
    feed("Scalar", "Function");
    double value = 10;
    evaluateInput(rootInput("Function"), &sample, &value);
    EXPECT_EQ(value, 3);
}

// Each of a hundred nodes adds one.
void makeChain(Network &network, int length) {
    HostNode *last = network.findNode("A");
    testNode(*last).step = 1;
    for (int i = 1; i < length; ++i) {
        HostNode &next = network.addNode(serverList().get("Test Node"));
        testNode(next).step = 1;
        network.connect(*last->findOutput("Scalar"), *next.findInput("Scalar"));
        last = &next;
    }
    network.connect(*last->findOutput("Scalar"), *network.root().findInput("Scalar"));
}

TEST_F(EvaluationTest, AChainOfAHundredNodesAddsUp) {
    makeChain(network, 100);
    EXPECT_EQ(scalarOf(network.root(), "Scalar"), 100);
    EXPECT_FALSE(takeEvaluationTooDeep());
}

class ThreadedEvaluation : public EvaluationTest {};

TEST_F(ThreadedEvaluation, SixteenThreadsGetTheSameAnswer) {
    makeChain(network, 100);
    feed("Color", "Color");
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kMaxThreads; ++i)
        threads.emplace_back([&, i] {
            const RoleScope role(ThreadRole::render);
            ShadingSample own{};
            own.threadIndex = i;
            for (int round = 0; round < 200; ++round) {
                double scalar = 0, colour[3] = {};
                nodeInputFuncs()->evaluate(rootInput("Scalar"), &own, &scalar);
                evaluateInput(rootInput("Color"), &own, colour);
                if (scalar != 100 || colour[1] != 0.2) ++wrong;
            }
        });
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(EvaluationTest, ACycleThatTheHostCannotSeeIsCutOffAndReported) {
    testNode(*node).step = 1;
    feed("Scalar", "Scalar");
    testNode(*node).elsewhere = rootInput("Scalar"); // the node reads the input that it feeds
    double value = 0;
    EXPECT_EQ(evaluateInput(rootInput("Scalar"), &sample, &value), 1);
    EXPECT_EQ(value, detail::kMaxEvaluationDepth);
    EXPECT_TRUE(takeEvaluationTooDeep());
    EXPECT_FALSE(takeEvaluationTooDeep());
    testNode(*node).elsewhere = nullptr;
    EXPECT_EQ(scalarOf(network.root(), "Scalar"), 1);
}

#ifndef NDEBUG
TEST_F(EvaluationTest, DebugBuildsRefuseTheWrongThread) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            const RoleScope role(ThreadRole::render);
            network.clear();
        },
        "interface thread");
    EXPECT_DEATH(
        {
            const RoleScope role(ThreadRole::controller);
            ShadingSample own{};
            double value = 0;
            nodeInputFuncs()->evaluate(rootInput("Scalar"), &own, &value);
        },
        "controller shades nothing");
    EXPECT_DEATH(
        {
            const RoleScope render(ThreadRole::render);
            const RoleScope role(ThreadRole::controller);
            network.init(kInitRender);
        },
        "samples are being evaluated");
}
#endif

} // namespace
} // namespace velm::host::test
