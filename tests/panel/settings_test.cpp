// Settings by label.

#include "host/panel/settings.h"

#include "tests/panel/panel_fixture.h"

#include "host/base/error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace velm::host;

namespace {

SettingDescription setting(const char *label, SettingValue value) {
    return {.label = label, .value = std::move(value), .location = {.file = "scene.json", .line = 12}};
}

class Settings : public ::testing::Test {
  protected:
    std::string complaint(const char *label, SettingValue value) {
        try {
            applySetting(*panel_, setting(label, std::move(value)));
        } catch (const InputError &error) {
            return error.what();
        }
        return "";
    }
    void apply(const char *label, SettingValue value) { applySetting(*panel_, setting(label, std::move(value))); }
    static std::array<double, 3> values(const HostVParm &parm, double time = 0) {
        std::array<double, 3> read{};
        parm.value(time, read.data());
        return read;
    }

    Plug plug_;
    PanelOwner panel_ = makePanel(plug_, number(kHintMinimum, Plug::kCount, 1) +
                                             Hints{word(kHintRange), word(Plug::kTurn), word(0), word(90), word(1)} +
                                             number(kHintMaximum, Plug::kOpacity, 200) +
                                             enable(Plug::kSwitch, nullptr, nullptr, {Plug::kSize}));
};

TEST_F(Settings, AreStoredInTheUnitsOfThePlugIn) {
    apply("Mode", std::string("Odd"));
    EXPECT_EQ(plug_.mode, 1);
    EXPECT_EQ(plug_.heard, (std::vector<std::string>{"set 1", "change 1 1 2"}));
    apply("Mode", std::string("Plain")); // spaces around an entry do not matter
    EXPECT_EQ(plug_.mode, 0);
    apply("Count", 27.0);
    EXPECT_EQ(plug_.count, 27);
    apply("Switch 2", true);
    EXPECT_EQ(plug_.on2, 1);
    EXPECT_EQ(plug_.on, 0);
    apply("Shape", std::string("Box"));
    EXPECT_EQ(plug_.shape, 20);
    apply("Name", std::string("a name"));
    EXPECT_STREQ(plug_.name, "a name");
    apply("Picture", std::string("moon.png"));
    EXPECT_EQ(plug_.picture, 1);
    apply("Size", -2.5);
    EXPECT_EQ(values(plug_.size)[0], -2.5);
    apply("Opacity", 20.0);
    EXPECT_EQ(values(plug_.opacity)[0], 0.2);
    apply("Turn", 45.0);
    EXPECT_NEAR(values(plug_.turn)[0], std::numbers::pi / 4, 1e-15);
    apply("Tint", Double3{0.1, 0.2, 0.3});
    EXPECT_EQ(values(plug_.tint), (std::array<double, 3>{0.1, 0.2, 0.3}));
    apply("Where", Double3{1, -2, 3});
    EXPECT_EQ(values(plug_.where), (std::array<double, 3>{1, -2, 3}));
}

TEST_F(Settings, AnimatedOnesCallThePlugInAsWell) {
    apply("Size", 1.0);
    EXPECT_EQ(plug_.heard, (std::vector<std::string>{"set 7", "change 7 7 2"}));
}

TEST_F(Settings, DisabledOnesCanBeSet) {
    EXPECT_FALSE(panel_->isEnabled(*panel_->find(Plug::kSize)));
    apply("Size", 3.0);
    EXPECT_EQ(values(plug_.size)[0], 3);
}

TEST_F(Settings, KeysAreConverted) {
    KeysDescription keys{.components = 1, .keys = {}, .before = kBehaveRepeat, .after = kBehaveLinear};
    keys.keys.push_back({.time = 2, .value = {90}, .shape = kShapeHermite, .parameters = {18, 36, 0, 0}});
    keys.keys.push_back({.time = 1, .value = {30}, .tension = 0.5, .continuity = 0.25, .bias = -1});
    keys.keys.push_back({.time = 3, .value = {60}, .shape = kShapeBezier2, .parameters = {-0.5, 18, 0.25, 36}});
    apply("Turn", keys);
    ASSERT_TRUE(plug_.turn.hasEnvelopes());
    const HostEnvelope &envelope = *plug_.turn.envelope(0);
    ASSERT_EQ(envelope.keys.size(), 3U) << "the key that an envelope starts with is gone";
    const double degree = std::numbers::pi / 180;
    EXPECT_EQ(envelope.keys[0]->time, 1);
    EXPECT_NEAR(envelope.keys[0]->value, 30 * degree, 1e-15);
    EXPECT_EQ(envelope.keys[0]->tension, 0.5);
    EXPECT_EQ(envelope.keys[0]->continuity, 0.25);
    EXPECT_EQ(envelope.keys[0]->bias, -1);
    EXPECT_NEAR(envelope.keys[1]->parameters[0], 18 * degree, 1e-15);
    EXPECT_NEAR(envelope.keys[1]->parameters[1], 36 * degree, 1e-15);
    EXPECT_EQ(envelope.keys[2]->parameters[0], -0.5) << "times have no unit to convert";
    EXPECT_NEAR(envelope.keys[2]->parameters[1], 18 * degree, 1e-15);
    EXPECT_EQ(envelope.keys[2]->parameters[2], 0.25);
    EXPECT_EQ(envelope.before, kBehaveRepeat);
    EXPECT_EQ(envelope.after, kBehaveLinear);

    const auto read = std::get<KeysDescription>(readSetting(*panel_, "Turn"));
    ASSERT_EQ(read.keys.size(), 3U);
    EXPECT_EQ(read.components, 1);
    EXPECT_EQ(read.before, kBehaveRepeat);
    EXPECT_NEAR(read.keys[1].value[0], 90, 1e-12);
    EXPECT_NEAR(read.keys[1].parameters[1], 36, 1e-12);
    EXPECT_NEAR(read.keys[2].parameters[2], 0.25, 1e-15);

    apply("Turn", 10.0);
    EXPECT_FALSE(plug_.turn.hasEnvelopes()) << "a plain value removes the keys";
    EXPECT_NEAR(std::get<double>(readSetting(*panel_, "Turn")), 10, 1e-12);
}

TEST_F(Settings, KeysOfThreeComponents) {
    KeysDescription keys{.components = 3, .keys = {}};
    keys.keys.push_back({.time = 0, .value = {1, 2, 3}});
    keys.keys.push_back({.time = 1, .value = {4, 5, 6}, .shape = kShapeLinear});
    apply("Where", keys);
    EXPECT_EQ(values(plug_.where, 0.5), (std::array<double, 3>{2.5, 3.5, 4.5}));
    const auto read = std::get<KeysDescription>(readSetting(*panel_, "Where"));
    EXPECT_EQ(read.keys[1].value, (Double3{4, 5, 6}));
    plug_.where.envelope(1)->putKey(0.5, 9);
    EXPECT_THROW(readSetting(*panel_, "Where"), InputError)
        << "a description cannot hold different keys for the components";
    EXPECT_EQ(describeValue(*panel_, *panel_->find(Plug::kWhere)), "2 keys");
}

TEST_F(Settings, ErrorsHaveReasonAndLocation) {
    plug_.connected = Plug::kTint;
    KeysDescription empty, triple{.components = 3, .keys = {{}}}, twice{.components = 1, .keys = {{}, {}}};
    KeysDescription high{.components = 1, .keys = {{.value = {91}}}};
    KeysDescription shapeless{.components = 1, .keys = {{.shape = 9}}}, wild{.components = 1, .keys = {{}}, .after = 7};
    KeysDescription endless{.components = 1, .keys = {{.time = INFINITY}}};
    const struct {
        const char *label;
        SettingValue value;
        const char *message;
    } rows[] = {
        {"Mod", 1.0, "there is no setting \"Mod\", did you mean \"Mode\"?"},
        {"Gradient", 1.0, "there is no setting \"Gradient\""},
        {"", 1.0, "there is no setting \"\""},
        {"Switch 3", true, "there is no setting \"Switch 3\", did you mean \"Switch 2\"?"},
        {"Press", true, "\"Press\": this control holds no value"},
        {"Tint", Double3{}, "\"Tint\": this setting is fed by a connection"},
        {"Mode", std::string("Ode"), "\"Mode\": there is no entry \"Ode\", did you mean \"Odd\"?"},
        {"Mode", std::string("Gradient"),
         "\"Mode\": there is no entry \"Gradient\"; there are \"Plain\", \"Odd\", \"Even\""},
        {"Mode", 1.0, "\"Mode\": expected the text of one of the entries"},
        {"Count", 2.5, "\"Count\": expected a whole number, not 2.5"},
        {"Count", 3e9, "\"Count\": expected a whole number, not 3000000000"},
        {"Count", true, "\"Count\": expected a whole number"},
        {"Count", 0.0, "\"Count\": 0 is beyond the limits: at least 1"},
        {"Count", std::nan(""), "\"Count\": the number is not finite"},
        {"Turn", 91.0, "\"Turn\": 91 is beyond the limits: from 0 to 90 degrees"},
        {"Turn", high, "\"Turn\": 91 is beyond the limits: from 0 to 90 degrees"},
        {"Opacity", 250.0, "\"Opacity\": 250 is beyond the limits: at most 200 %"},
        {"Switch", 1.0, "\"Switch\": expected true or false"},
        {"Name", 1.0, "\"Name\": expected a text"},
        {"Name", std::string(256, 'x'), "\"Name\": the text has 256 bytes; it may have at most 255"},
        {"Name", std::string(3, '\0'), "\"Name\": the text has a zero character in it"},
        {"Size", Double3{}, "\"Size\": expected a number or keys"},
        {"Where", 1.0, "\"Where\": expected three numbers or keys"},
        {"Where", Double3{0, INFINITY, 0}, "\"Where\": the number is not finite"},
        {"Size", empty, "\"Size\": there are no keys"},
        {"Size", triple, "\"Size\": the keys have 3 numbers each, the setting has 1"},
        {"Size", twice, "\"Size\": there are two keys at 0 seconds"},
        {"Size", shapeless, "\"Size\": the shape of a key is unknown"},
        {"Size", wild, "\"Size\": a behaviour beyond the keys is unknown"},
        {"Size", endless, "\"Size\": a number of a key is not finite"},
        {"Count", empty, "\"Count\": expected a whole number"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(complaint(row.label, row.value), std::string("scene.json:12: ") + row.message);
    EXPECT_TRUE(plug_.heard.empty()) << "nothing was changed: " << plug_.heard.front();
    EXPECT_FALSE(plug_.size.hasEnvelopes());
    plug_.refuses = true;
    EXPECT_EQ(complaint("Size", 1.0), "scene.json:12: \"Size\": the node refused the value");
    EXPECT_EQ(complaint("Mode", std::string("Odd")), "scene.json:12: \"Mode\": the node refused the value");
}

TEST_F(Settings, AParameterWithOtherComponentsIsLeftAlone) {
    static constexpr HostPanelValue values[] = {{Plug::kTint, "Tint", "float-env"}, {0, nullptr, nullptr}};
    const PanelOwner panel(panelFuncs()->create(kPanelForm, nullptr));
    const Hints hints = control(Plug::kTint, "float-env", "Tint") + Hints{word(kHintEnd)};
    panelFuncs()->hint(panel.get(), 0, hints.data());
    panelFuncs()->describe(panel.get(), values, Plug::get, Plug::set);
    panelFuncs()->viewInstance(panel.get(), &plug_);
    EXPECT_THROW(applySetting(*panel, setting("Tint", 1.0)), InputError);
    EXPECT_THROW(readSetting(*panel, "Tint"), InputError);
}

TEST_F(Settings, NumbersWorkOnPanelsThatStoreTheirOwnValues) {
    static constexpr HostPanelValue values[] = {{1, "Turn", "angle"}, {2, "Tint", "color"}, {0, nullptr, nullptr}};
    const PanelOwner panel(panelFuncs()->create(kPanelOwn, nullptr));
    const Hints hints = control(1, "angle", "Turn") + control(2, "color", "Tint") + Hints{word(kHintEnd)};
    panelFuncs()->hint(panel.get(), 0, hints.data());
    panelFuncs()->describe(panel.get(), values, nullptr, nullptr);
    applySetting(*panel, setting("Turn", 180.0));
    EXPECT_NEAR(*static_cast<double *>(panel->value(1)), std::numbers::pi, 1e-15);
    applySetting(*panel, setting("Tint", Double3{1, 2, 3}));
    EXPECT_EQ(std::get<Double3>(readSetting(*panel, "Tint")), (Double3{1, 2, 3}));
    EXPECT_THROW(applySetting(*panel, setting("Turn", KeysDescription{.components = 1, .keys = {{}}})), InputError);
}

TEST_F(Settings, AreReadAndDescribedInShownUnits) {
    apply("Opacity", 20.0);
    apply("Turn", 20.0);
    apply("Tint", Double3{1, 0.5, 0});
    plug_.mode = 2;
    plug_.on = 1;
    const struct {
        const char *label;
        unsigned int id;
        SettingValue value;
        const char *text;
    } rows[] = {{"Mode", Plug::kMode, std::string("Even"), "Even"},
                {"Count", Plug::kCount, 1.0, "1"},
                {"Switch", Plug::kSwitch, true, "on"},
                {"Switch 2", Plug::kSwitch2, false, "off"},
                {"Shape", Plug::kShape, std::string("Ball"), "Ball"},
                {"Name", Plug::kName, std::string("first"), "\"first\""},
                {"Picture", Plug::kPicture, std::string("(none)"), "(none)"},
                {"Size", Plug::kSize, 0.0, "0"},
                {"Opacity", Plug::kOpacity, 20.0, "20"},
                {"Tint", Plug::kTint, Double3{1, 0.5, 0}, "1 0.5 0"}};
    for (const auto &row : rows) {
        const SettingValue read = readSetting(*panel_, row.label);
        EXPECT_EQ(read.index(), row.value.index()) << row.label;
        std::visit(
            [&](const auto &wanted) {
                using Wanted = std::decay_t<decltype(wanted)>;
                if constexpr (!std::is_same_v<Wanted, KeysDescription>) {
                    EXPECT_EQ(std::get<Wanted>(read), wanted) << row.label;
                }
            },
            row.value);
        EXPECT_EQ(describeValue(*panel_, *panel_->find(row.id)), row.text) << row.label;
    }
    EXPECT_EQ(describeValue(*panel_, *panel_->find(Plug::kTurn)), "20") << "without the last digits of the conversion";
    EXPECT_EQ(describeValue(*panel_, *panel_->find(Plug::kPress)), "");
}

TEST_F(Settings, UnreadableSettingsAreErrors) {
    plug_.shape = -25536;
    EXPECT_EQ(describeValue(*panel_, *panel_->find(Plug::kShape)), "(-25536)");
    EXPECT_THROW(readSetting(*panel_, "Shape"), InputError);
    EXPECT_THROW(readSetting(*panel_, "Press"), InputError);
    EXPECT_THROW(readSetting(*panel_, "Gradient"), InputError);
    plug_.connected = Plug::kMode;
    EXPECT_THROW(readSetting(*panel_, "Mode"), InputError);
    EXPECT_EQ(describeValue(*panel_, *panel_->find(Plug::kMode)), "");
}

TEST_F(Settings, LabelsAreListed) {
    EXPECT_EQ(settingLabels(*panel_),
              (std::vector<std::string>{"Mode", "Count", "Switch", "Shape", "Name", "Picture", "Size", "Opacity",
                                        "Turn", "Tint", "Where", "Switch 2"}));
}

} // namespace
