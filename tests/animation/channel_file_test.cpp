// Envelopes and parameters in saved states: the exact bytes, reading them back, and damaged data.

#include "host/animation/vparm.h"
#include "tests/state/state_fixture.h"

#include <gtest/gtest.h>

using namespace velm::host;

namespace {

std::string saved(HostVParm &parm, int mode) {
    StateWriter writer(mode);
    EXPECT_EQ(vparmFuncs()->save(&parm, writer.state()), nullptr);
    return writer.finish();
}

// Keys of every shape, with numbers that floats hold exactly.
void fill(HostEnvelope &envelope, double offset) {
    envelope.clearKeys();
    for (int shape = kShapeTcb; shape <= kShapeBezier2; ++shape) {
        HostKey &key = envelope.putKey(shape * 0.5, offset + shape);
        key.shape = shape;
        if (shape == kShapeTcb) {
            key.tension = 0.25;
            key.continuity = -0.5;
            key.bias = 1;
        }
        if (shape == kShapeHermite || shape == kShapeBezier1) key.parameters = {-1.5, 2.5, 0, 0};
        if (shape == kShapeBezier2) key.parameters = {-0.125, 0.75, 0.375, -3};
    }
    envelope.before = kBehaveOscillate;
    envelope.after = kBehaveLinear;
}

TEST(ParameterFile, APlainValueInBinary) {
    HostVParm parm(kParmColour);
    const double values[] = {1, 0.5, 0};
    parm.setConstant(values);
    EXPECT_EQ(saved(parm, kStateBinary),
              literal("VPRM\0\x1c\0\0\0\3\0\0\0\0VPVL\0\xe\x3f\x80\0\0\x3f\0\0\0\0\0\0\0\0\0"));
}

TEST(ParameterFile, APlainValueInText) {
    HostVParm parm(kParmFloat);
    const double value = 0.25;
    parm.setConstant(&value);
    EXPECT_EQ(saved(parm, kStateText), "{ VariantParameter\n"
                                       "  3\n"
                                       "  0\n"
                                       "  { ParameterValue\n"
                                       "    0.25\n"
                                       "    0\n"
                                       "  }\n"
                                       "}\n");
}

TEST(ParameterFile, AnEnvelopeInBinary) {
    HostVParm parm(kParmPercent);
    parm.setUp("Alpha", nullptr, nullptr, nullptr);
    const double value = 1;
    parm.setConstant(&value);
    parm.createEnvelopes();
    EXPECT_EQ(saved(parm, kStateBinary),
              literal("VPRM\0\x64\0\0\0\3\0\0\0\0VPVL\0\x56\x3f\x80\0\0\0\1ENVL\0\x4a\0\1NAME\0\6Alpha\0TYPE\0\2\4\0"
                      "PRE \0\2\0\1KEY \0\x8\0\0\0\0\x3f\x80\0\0SPAN\0\x10TCB \0\0\0\0\0\0\0\0\0\0\0\0POST\0\2\0\1"));
}

TEST(ParameterFile, AnEnvelopeInText) {
    HostVParm parm(kParmFloatTriple);
    parm.setUp("Position", nullptr, nullptr, nullptr);
    parm.createEnvelopes();
    fill(*parm.envelope(1), 0.1);
    EXPECT_EQ(saved(parm, kStateText), "{ VariantParameter\n"
                                       "  3\n"
                                       "  0\n"
                                       "  { ParameterValue\n"
                                       "    0 0.1 0\n"
                                       "    1\n"
                                       "    { Envelope\n"
                                       "      1\n"
                                       "      Key 0 0 0 0 0 0 0 0 0\n"
                                       "      Behaviors 1 1\n"
                                       "    }\n"
                                       "    { Envelope\n"
                                       "      6\n"
                                       "      Key 0.1 0 0 0.25 -0.5 1 0 0 0\n"
                                       "      Key 1.1 0.5 1 0 0 0 -1.5 2.5 0\n"
                                       "      Key 2.1 1 2 0 0 0 -1.5 2.5 0\n"
                                       "      Key 3.1 1.5 3 0 0 0 0 0 0\n"
                                       "      Key 4.1 2 4 0 0 0 0 0 0\n"
                                       "      Key 5.1 2.5 5 -0.125 0.75 0.375 -3 0 0\n"
                                       "      Behaviors 3 5\n"
                                       "    }\n"
                                       "    { Envelope\n"
                                       "      1\n"
                                       "      Key 0 0 0 0 0 0 0 0 0\n"
                                       "      Behaviors 1 1\n"
                                       "    }\n"
                                       "  }\n"
                                       "}\n");
}

TEST(ParameterFile, EveryShapeReadsBack) {
    for (const int mode : {kStateBinary, kStateText}) {
        const auto root = makeRootGroup("Scene");
        HostVParm from(kParmColour), to(kParmColour);
        to.setUp("Color", root.get(), nullptr, nullptr);
        from.createEnvelopes();
        for (int i = 0; i < 3; ++i) fill(*from.envelope(i), 10 * i);
        StateReader reader(mode, saved(from, mode), "data");
        ASSERT_EQ(to.load(reader.state()), nullptr);
        EXPECT_FALSE(reader.failed()) << reader.error();
        for (int i = 0; i < 3; ++i) {
            const HostEnvelope &a = *from.envelope(i), &b = *to.envelope(i);
            ASSERT_EQ(a.keys.size(), b.keys.size());
            EXPECT_EQ(b.before, kBehaveOscillate);
            EXPECT_EQ(b.after, kBehaveLinear);
            for (std::size_t k = 0; k < a.keys.size(); ++k) {
                EXPECT_EQ(a.keys[k]->time, b.keys[k]->time);
                EXPECT_EQ(a.keys[k]->value, b.keys[k]->value);
                EXPECT_EQ(a.keys[k]->shape, b.keys[k]->shape);
                EXPECT_EQ(a.keys[k]->tension, b.keys[k]->tension);
                EXPECT_EQ(a.keys[k]->continuity, b.keys[k]->continuity);
                EXPECT_EQ(a.keys[k]->bias, b.keys[k]->bias);
                EXPECT_EQ(a.keys[k]->parameters, b.keys[k]->parameters);
            }
        }
        EXPECT_NE(root->findEnvelope("Color.G"), nullptr) << "loading leaves the names of the parameter unchanged";
        EXPECT_EQ(saved(to, kStateText), saved(from, kStateText));
    }
}

TEST(ParameterFile, ReadsWhatOtherProgramsWrite) {
    // In binary: a channel index in its long form, sub-blocks of other kinds, a span without numbers. In text: cached
    // tangents and extra numbers.
    StateReader binary(kStateBinary,
                       literal("VPRM\0\x46\0\0\0\3\0\0\0\0VPVL\0\x38\x3f\x80\0\0\0\1ENVL\0\x2c\xff\0\0\1OTHR\0\2\1\2"
                               "KEY \0\x8\0\0\0\0\x40\0\0\0SPAN\0\4LINEPOST\0\2\0\2"),
                       "data");
    HostVParm parm(kParmFloat);
    ASSERT_EQ(parm.load(binary.state()), nullptr) << binary.error();
    ASSERT_TRUE(parm.hasEnvelopes());
    EXPECT_EQ(parm.envelope(0)->keys.at(0)->value, 2);
    EXPECT_EQ(parm.envelope(0)->keys.at(0)->shape, kShapeLinear);
    EXPECT_EQ(parm.envelope(0)->after, kBehaveRepeat);
    StateReader text(kStateText,
                     "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n 2\n"
                     " Key 2 0 0 0 0 0 -0.17433448632558185 -0.34 0 9\n Key 3 1 3\n Behaviors 0 4\n }\n }\n}\n",
                     "data");
    ASSERT_EQ(parm.load(text.state()), nullptr) << text.error();
    EXPECT_EQ(parm.envelope(0)->keys.size(), 2U);
    EXPECT_EQ(parm.envelope(0)->keys[0]->parameters[0], 0);
    EXPECT_EQ(parm.envelope(0)->after, kBehaveOffsetRepeat);
}

TEST(ParameterFile, DamageLeavesTheParameterUnchanged) {
    const char *texts[] = {
        "",
        "{ Foreign\n}\n",
        "{ VariantParameter\n 3\n 0\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n }\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n 2\n Key 1 0 0\n }\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n 1\n Key 1 0 6\n }\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n 1\n Key 1 nan 0\n }\n }\n}\n",
        "{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n 1\n Key 1 0 0 inf\n }\n }\n}\n",
        ("{ VariantParameter\n 3\n 0\n { ParameterValue\n 1\n 1\n { Envelope\n 1\n Key 1 0 0\n Behaviors 1 6\n }\n "
         "}\n}\n"),
    };
    for (const char *text : texts) {
        HostVParm parm(kParmFloat);
        const double seven = 7;
        parm.setConstant(&seven);
        StateReader reader(kStateText, text, "data");
        EXPECT_NE(parm.load(reader.state()), nullptr) << text;
        double read[3];
        EXPECT_EQ(parm.value(0, read), 7) << text;
        EXPECT_FALSE(parm.hasEnvelopes()) << text;
        EXPECT_EQ(reader.state()->depth(reader.state()->data), 0) << "every block is closed again: " << text;
    }
}

TEST(ParameterFile, TruncationAndChangesAnywhereAreHarmless) {
    for (const int mode : {kStateBinary, kStateText}) {
        HostVParm parm(kParmColour);
        parm.createEnvelopes();
        for (int i = 0; i < 3; ++i) fill(*parm.envelope(i), i);
        const std::string complete = saved(parm, mode);
        for (std::size_t at = 0; at + 1 < complete.size(); ++at) {
            HostVParm loaded(kParmColour);
            StateReader cut(mode, complete.substr(0, at), "data");
            const bool failed = loaded.load(cut.state()) || cut.failed();
            EXPECT_TRUE(failed) << "form " << mode << ", " << at << " bytes";
            std::string changed = complete;
            changed[at] = static_cast<char>(changed[at] ^ 0x55);
            StateReader reader(mode, changed, "data");
            loaded.load(reader.state());
        }
    }
}

TEST(EnvelopeFile, SavesAndLoadsOnItsOwn) {
    for (const int mode : {kStateBinary, kStateText}) {
        HostEnvelope envelope, loaded;
        fill(envelope, 2);
        StateWriter writer(mode);
        EXPECT_EQ(envelopeFuncs()->save(&envelope, writer.state()), nullptr);
        StateReader reader(mode, writer.finish(), "data");
        EXPECT_EQ(envelopeFuncs()->load(&loaded, reader.state()), nullptr);
        for (const double time : {-1.0, 0.3, 0.9, 1.7, 2.4, 5.0})
            EXPECT_EQ(loaded.evaluate(time), envelope.evaluate(time));
        EXPECT_NE(envelopeFuncs()->load(&loaded, reader.state()), nullptr) << "the data holds one envelope only";
    }
}

} // namespace
