// Lights and the context that keeps them: uniforms, recipes, ids, and that what is cleared goes dark.
#include <Fixtures.h>
#include <LogCapture.h>

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/Library.h>

#include <QColor>
#include <QVector4D>

#include <array>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <type_traits>

using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

static_assert(!std::is_copy_constructible_v<BGFXPointLightSource> &&
              !std::is_copy_assignable_v<BGFXPointLightSource>);

using Values = std::array<std::vector<float>, 4>;

class BGFXPointLightSourceTest : public LibraryFixture {
protected:
    static BGFXPointLightSource Sample(std::string const& name = "lamp") {
        return {name, QVector4D(1, 2, 3, 4), Qt::red, Qt::green, QColor(0, 0, 255, 51)};
    }

    /// The same with its uniforms.
    static BGFXPointLightSource Ready(std::string const& name) {
        BGFXPointLightSource light = Sample(name);
        light.CreateUniforms();
        return light;
    }

    template<typename Submittable>
    static std::vector<std::string> Submitted(Submittable const& lights) {
        recorder::ClearCalls();
        lights.Submit();
        return recorder::CallTexts();
    }

    /// The four vectors that a light without uniforms would set.
    static Values ValuesOf(BGFXPointLightSource& light) {
        light.CreateUniforms();
        recorder::ClearCalls();
        light.Submit();
        Values values;
        std::vector<recorder::Call> const calls = recorder::CallsNamed("setUniform");
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = calls.at(i).PayloadAs<float>();
        light.DestroyUniforms();
        return values;
    }

    static std::vector<std::string> Warnings(LogCapture const& log) {
        std::vector<std::string> warnings;
        for (LogLine const& line : log.Lines()) {
            if (line.level == QtWarningMsg)
                warnings.push_back(line.text);
        }
        return warnings;
    }

    static std::vector<float> Gray(int component) {
        float const part = float(component) / 255.0f;
        return {part, part, part, 1.0f};
    }
};

using BGFXPointLightSourceBuilderTest = BGFXPointLightSourceTest;

class BGFXLightingContextTest : public BGFXPointLightSourceTest {
protected:
    BGFXLightingContext m_lights;

    void TearDown() override {
        m_lights.ClearAll();
        BGFXPointLightSourceTest::TearDown();
    }
};

} // namespace

TEST_F(BGFXPointLightSourceTest, NoConstructorCallsBgfx) {
    {
        BGFXPointLightSource const unnamed;
        BGFXPointLightSource const named("lamp");
        BGFXPointLightSource const sample = Sample();
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXPointLightSourceTest, CreatesItsUniformsInOrderUnderItsName) {
    BGFXPointLightSource light = Sample();
    light.CreateUniforms();
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createUniform(lamp_position, Vec4, 1)", "createUniform(lamp_ambient, Vec4, 1)",
                            "createUniform(lamp_diffuse, Vec4, 1)", "createUniform(lamp_specular, Vec4, 1)"));
}

TEST_F(BGFXPointLightSourceTest, SubmitsItsValuesInOrder) {
    BGFXPointLightSource light = Sample();
    light.CreateUniforms();
    EXPECT_THAT(Submitted(light),
                ElementsAre("setUniform(lamp_position, 1, 2, 3, 4)", "setUniform(lamp_ambient, 1, 0, 0, 1)",
                            "setUniform(lamp_diffuse, 0, 1, 0, 1)",
                            "setUniform(lamp_specular, 0, 0, 1, 0.2)"));
}

TEST_F(BGFXPointLightSourceTest, AllIsZeroAtFirst) {
    BGFXPointLightSource light;
    light.CreateUniforms();
    EXPECT_THAT(Submitted(light),
                ElementsAre("setUniform(_position, 0, 0, 0, 0)", "setUniform(_ambient, 0, 0, 0, 0)",
                            "setUniform(_diffuse, 0, 0, 0, 0)", "setUniform(_specular, 0, 0, 0, 0)"));
}

TEST_F(BGFXPointLightSourceTest, SettersOnlyStore) {
    BGFXPointLightSource light("lamp");
    light.CreateUniforms();
    recorder::ClearCalls();
    light.SetPosition({5, 6, 7, 1});
    light.SetAmbient(Qt::white);
    light.SetDiffuse(Qt::cyan);
    light.SetSpecular(Qt::magenta);
    light.SetName("other");
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(Submitted(light),
                ElementsAre("setUniform(lamp_position, 5, 6, 7, 1)", "setUniform(lamp_ambient, 1, 1, 1, 1)",
                            "setUniform(lamp_diffuse, 0, 1, 1, 1)", "setUniform(lamp_specular, 1, 0, 1, 1)"));
    light.DestroyUniforms();
    light.CreateUniforms();
    EXPECT_EQ(Submitted(light).front(), "setUniform(other_position, 5, 6, 7, 1)");
}

TEST_F(BGFXPointLightSourceTest, DestroysEachUniformOnceInOrder) {
    BGFXPointLightSource light = Sample();
    light.CreateUniforms();
    std::vector<std::string> destructions;
    for (recorder::Call const& call : recorder::Calls())
        destructions.push_back("destroy(" + call.result + ")");
    recorder::ClearCalls();
    light.DestroyUniforms();
    light.DestroyUniforms();
    EXPECT_EQ(recorder::CallTexts(), destructions);
}

TEST_F(BGFXPointLightSourceTest, CreatingTwiceDestroysNothing) {
    ExpectLeaks();
    BGFXPointLightSource light = Sample();
    light.CreateUniforms();
    light.CreateUniforms();
    EXPECT_EQ(recorder::CountCalls("createUniform"), 8u);
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
}

TEST_F(BGFXPointLightSourceTest, MoveConstructionHandsOverTheUniforms) {
    std::optional<BGFXPointLightSource> source = Sample();
    source->CreateUniforms();
    recorder::ClearCalls();
    {
        BGFXPointLightSource const target(std::move(*source));
        source.reset();
        EXPECT_THAT(recorder::Calls(), IsEmpty());
        EXPECT_EQ(Submitted(target).front(), "setUniform(lamp_position, 1, 2, 3, 4)");
    }
    EXPECT_EQ(recorder::CountCalls("destroy"), 4u);
}

TEST_F(BGFXPointLightSourceTest, AfterMoveAssignmentBothHaveTheUniforms) {
    ExpectLeaks();
    BGFXPointLightSource target("old");
    target.CreateUniforms();
    BGFXPointLightSource source = Sample();
    // Once for each of the two that will destroy them.
    source.CreateUniforms();
    source.CreateUniforms();
    recorder::ClearCalls();
    target = std::move(source);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(Submitted(target).front(), "setUniform(lamp_position, 1, 2, 3, 4)");
    EXPECT_EQ(Submitted(source), Submitted(target));
}

TEST_F(BGFXPointLightSourceTest, UniformsGoWhenTheContextStops) {
    BGFXPointLightSource light = Ready("lamp");
    Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    recorder::ClearCalls();
    light.DestroyUniforms();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXPointLightSourceBuilderTest, BuildsWhatItWasTold) {
    BGFXPointLightSource light = BGFXPointLightSourceBuilder()
                                     .SetName("lamp")
                                     .SetPosition({1, 2, 3, 4})
                                     .SetAmbient(Qt::red)
                                     .SetDiffuse(Qt::green)
                                     .SetSpecular(Qt::blue)
                                     .Build();
    light.CreateUniforms();
    EXPECT_THAT(Submitted(light),
                ElementsAre("setUniform(lamp_position, 1, 2, 3, 4)", "setUniform(lamp_ambient, 1, 0, 0, 1)",
                            "setUniform(lamp_diffuse, 0, 1, 0, 1)", "setUniform(lamp_specular, 0, 0, 1, 1)"));
}

TEST_F(BGFXPointLightSourceBuilderTest, TheAmbientRecipeIsDim) {
    BGFXPointLightSource light = BGFXPointLightSourceBuilder().DefaultAmbient().Build();
    EXPECT_THAT(ValuesOf(light), ElementsAre(std::vector<float>(4), Gray(76), Gray(0), Gray(51)));
}

TEST_F(BGFXPointLightSourceBuilderTest, TheDiffuseRecipeIsALamp) {
    BGFXPointLightSource light = BGFXPointLightSourceBuilder().DefaultDiffuse().Build();
    EXPECT_THAT(ValuesOf(light), ElementsAre(std::vector<float>(4), Gray(102), Gray(178), Gray(255)));
}

TEST_F(BGFXPointLightSourceBuilderTest, RecipesForgetWhatWasSetBefore) {
    for (auto const recipe :
         {&BGFXPointLightSourceBuilder::DefaultAmbient, &BGFXPointLightSourceBuilder::DefaultDiffuse}) {
        BGFXPointLightSourceBuilder builder;
        builder.SetName("lamp").SetPosition({1, 2, 3, 4});
        BGFXPointLightSource light = (builder.*recipe)().Build();
        light.CreateUniforms();
        EXPECT_EQ(Submitted(light).front(), "setUniform(_position, 0, 0, 0, 0)");
    }
}

TEST_F(BGFXPointLightSourceBuilderTest, WhatFollowsARecipeCounts) {
    BGFXPointLightSource light =
        BGFXPointLightSourceBuilder().DefaultDiffuse().SetName("lamp").SetPosition({1, 2, 3, 4}).Build();
    light.CreateUniforms();
    EXPECT_EQ(Submitted(light).front(), "setUniform(lamp_position, 1, 2, 3, 4)");
}

TEST_F(BGFXPointLightSourceBuilderTest, ASecondLightHasTheValuesAndNoName) {
    BGFXPointLightSourceBuilder builder;
    builder.SetName("a name too long to be stored within the string").SetPosition({1, 2, 3, 4});
    BGFXPointLightSource const first = builder.SetAmbient(Qt::red).Build();
    BGFXPointLightSource second = builder.Build();
    second.CreateUniforms();
    EXPECT_THAT(Submitted(second),
                ElementsAre("setUniform(_position, 1, 2, 3, 4)", "setUniform(_ambient, 1, 0, 0, 1)",
                            "setUniform(_diffuse, 0, 0, 0, 0)", "setUniform(_specular, 0, 0, 0, 0)"));
}

TEST_F(BGFXLightingContextTest, IdsCountFromOneAndAreNotUsedAgain) {
    EXPECT_EQ(m_lights.Add(Sample("a")), 1);
    EXPECT_EQ(m_lights.Add(Sample("b")), 2);
    m_lights.ClearAll();
    EXPECT_EQ(m_lights.Add(Sample("c")), 3);
}

TEST_F(BGFXLightingContextTest, CountsItsLights) {
    EXPECT_TRUE(m_lights.IsEmpty());
    EXPECT_EQ(m_lights.GetCount(), 0u);
    m_lights.Add(Sample("a"));
    m_lights.Add(Sample("b"));
    EXPECT_FALSE(m_lights.IsEmpty());
    EXPECT_EQ(m_lights.GetCount(), 2u);
    m_lights.ClearAll();
    EXPECT_TRUE(m_lights.IsEmpty());
    EXPECT_EQ(m_lights.GetCount(), 0u);
}

TEST_F(BGFXLightingContextTest, GivesALightById) {
    m_lights.Add(Ready("a"));
    int const id = m_lights.Add(Ready("b"));
    EXPECT_EQ(Submitted(m_lights.Get(id)).front(), "setUniform(b_position, 1, 2, 3, 4)");
}

TEST_F(BGFXLightingContextTest, UnknownIdsThrow) {
    int const cleared = m_lights.Add(Sample("a"));
    m_lights.ClearAll();
    for (int const id : {-1, 0, cleared, 2}) {
        try {
            m_lights.Get(id);
            ADD_FAILURE() << id;
        } catch (std::out_of_range const& error) {
            EXPECT_STREQ(error.what(), "invalid map<K, T> key");
        }
    }
}

TEST_F(BGFXLightingContextTest, AddingTakesTheUniformsAlong) {
    {
        BGFXPointLightSource light = Ready("a");
        recorder::ClearCalls();
        m_lights.Add(std::move(light));
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(Submitted(m_lights).front(), "setUniform(a_position, 1, 2, 3, 4)");
}

TEST_F(BGFXLightingContextTest, SubmitsInTheOrderOfIds) {
    m_lights.Add(Ready("b"));
    m_lights.Add(Ready("a"));
    EXPECT_THAT(Submitted(m_lights),
                ElementsAre("setUniform(b_position, 1, 2, 3, 4)", "setUniform(b_ambient, 1, 0, 0, 1)",
                            "setUniform(b_diffuse, 0, 1, 0, 1)", "setUniform(b_specular, 0, 0, 1, 0.2)",
                            "setUniform(a_position, 1, 2, 3, 4)", "setUniform(a_ambient, 1, 0, 0, 1)",
                            "setUniform(a_diffuse, 0, 1, 0, 1)", "setUniform(a_specular, 0, 0, 1, 0.2)"));
}

TEST_F(BGFXLightingContextTest, AnEmptyOneSubmitsNothing) {
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
}

TEST_F(BGFXLightingContextTest, ClearingDestroysTheUniforms) {
    m_lights.Add(Ready("a"));
    m_lights.Add(Ready("b"));
    recorder::ClearCalls();
    m_lights.ClearAll();
    EXPECT_THAT(recorder::CallNames(), ElementsAre("destroy", "destroy", "destroy", "destroy", "destroy",
                                                   "destroy", "destroy", "destroy"));
}

TEST_F(BGFXLightingContextTest, TheDestructorDestroysTheUniforms) {
    {
        BGFXLightingContext lights;
        lights.Add(Ready("a"));
        recorder::ClearCalls();
    }
    EXPECT_EQ(recorder::CountCalls("destroy"), 4u);
}

TEST_F(BGFXLightingContextTest, AClearedLightIsTurnedOffByTheNextSubmit) {
    m_lights.Add(Ready("a"));
    m_lights.Submit();
    m_lights.ClearAll();
    std::vector<std::string> const texts = Submitted(m_lights);
    ASSERT_THAT(texts, testing::SizeIs(12));
    EXPECT_EQ(texts[0], "createUniform(a_position, Vec4, 1)");
    EXPECT_THAT(std::vector(texts.begin() + 4, texts.begin() + 8),
                ElementsAre("setUniform(a_position, 0, 0, 0, 0)", "setUniform(a_ambient, 0, 0, 0, 0)",
                            "setUniform(a_diffuse, 0, 0, 0, 0)", "setUniform(a_specular, 0, 0, 0, 0)"));
    EXPECT_EQ(recorder::CountCalls("destroy"), 4u);
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
}

TEST_F(BGFXLightingContextTest, ALightOfTheLightingProgramIsTurnedOffByEverySubmit) {
    m_lights.Add(Ready("u_light7"));
    m_lights.Submit();
    m_lights.ClearAll();
    for (int i = 0; i < 2; ++i) // bgfx forgets what was set after a frame's last submission
        EXPECT_THAT(Submitted(m_lights), testing::Contains("setUniform(u_light7_diffuse, 0, 0, 0, 0)"));
}

TEST_F(BGFXLightingContextTest, AClearedLightThatIsThereAgainIsNotTurnedOff) {
    m_lights.Add(Ready("a"));
    m_lights.Add(Ready("b"));
    m_lights.Submit();
    m_lights.ClearAll();
    m_lights.Add(Ready("a"));
    std::vector<std::string> const texts = Submitted(m_lights);
    EXPECT_EQ(recorder::CountCalls("createUniform"), 4u);
    EXPECT_THAT(texts, testing::Contains("setUniform(b_diffuse, 0, 0, 0, 0)"));
    EXPECT_THAT(texts, testing::Not(testing::Contains("setUniform(a_diffuse, 0, 0, 0, 0)")));
    EXPECT_EQ(texts.back(), "setUniform(a_specular, 0, 0, 1, 0.2)") << "darkness comes first";
}

TEST_F(BGFXLightingContextTest, ALightThatNeverHadUniformsIsNotTurnedOff) {
    m_lights.Add(Sample("a"));
    m_lights.ClearAll();
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
}

TEST_F(BGFXLightingContextTest, ALightThatWasNeverSubmittedIsNotTurnedOff) {
    m_lights.Add(Ready("u_light0"));
    m_lights.ClearAll();
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
}

TEST_F(BGFXLightingContextTest, TurningOffCreatesUniformsOnlyOnce) {
    m_lights.Add(Ready("u_light0"));
    m_lights.Submit();
    m_lights.ClearAll();
    m_lights.Submit();
    EXPECT_THAT(Submitted(m_lights), ElementsAre("setUniform(u_light0_position, 0, 0, 0, 0)",
                                                 "setUniform(u_light0_ambient, 0, 0, 0, 0)",
                                                 "setUniform(u_light0_diffuse, 0, 0, 0, 0)",
                                                 "setUniform(u_light0_specular, 0, 0, 0, 0)"));
}

TEST_F(BGFXLightingContextTest, ALampThatAnotherContextSubmittedSinceShinesOn) {
    BGFXLightingContext others;
    others.Add(Ready("u_light0"));
    m_lights.Add(Ready("u_light0"));
    m_lights.Submit();
    m_lights.ClearAll();
    m_lights.Submit();
    for (int frame = 0; frame < 2; ++frame) {
        others.Submit();
        EXPECT_THAT(Submitted(m_lights), testing::Not(testing::Contains(testing::StartsWith("setUniform"))));
    }
}

TEST_F(BGFXLightingContextTest, ALampThatTheApplicationSubmittedSinceShinesOn) {
    BGFXPointLightSource const lamp = Ready("u_light0");
    m_lights.Add(Ready("u_light0"));
    m_lights.Submit();
    lamp.Submit();
    m_lights.ClearAll();
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
}

TEST_F(BGFXLightingContextTest, OneThatWasClearedBeforeTheLibraryStoppedTurnsNothingOffAfterwards) {
    m_lights.Add(Ready("u_light0"));
    m_lights.Submit();
    m_lights.ClearAll();
    Shutdown();
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
    ASSERT_TRUE(Init(false));
    EXPECT_THAT(Submitted(m_lights), IsEmpty());
}

TEST_F(BGFXPointLightSourceTest, WithoutUniformsOfThisRunItIsLeftOutWithOneWarning) {
    BGFXPointLightSource light = Ready("forgotten");
    BGFXLightingContext lights;
    lights.Add(Ready("forgotten"));
    Shutdown();
    LogCapture const log;
    EXPECT_THAT(Submitted(light), IsEmpty());
    EXPECT_THAT(Submitted(lights), IsEmpty());
    ASSERT_TRUE(Init(false));
    EXPECT_THAT(Submitted(light), IsEmpty());
    EXPECT_THAT(Warnings(log), ElementsAre(testing::HasSubstr("\"forgotten\"")));
    light.CreateUniforms();
    EXPECT_THAT(Submitted(light), testing::SizeIs(4));
}

TEST_F(BGFXPointLightSourceTest, UniformsThatBgfxDoesNotCreateAreLeftOutWithOneWarning) {
    std::vector<bgfx::UniformHandle> others;
    while (others.empty() || bgfx::isValid(others.back()))
        others.push_back(
            bgfx::createUniform(("u" + std::to_string(others.size())).c_str(), bgfx::UniformType::Vec4));
    others.pop_back();
    bgfx::destroy(others.back()); // room for one
    others.pop_back();
    bgfx::frame(); // gives the handle back
    LogCapture const log;
    BGFXPointLightSource light("crowded");
    light.CreateUniforms();
    EXPECT_THAT(Submitted(light), ElementsAre("setUniform(crowded_position, 0, 0, 0, 0)"));
    EXPECT_THAT(Warnings(log), ElementsAre(testing::HasSubstr("[uniform.not-created]")));
    for (bgfx::UniformHandle const uniform : others)
        bgfx::destroy(uniform);
}

// Whether the application runs bgfx by itself is not known then.
TEST(BGFXPointLightSourceBeforeInitTest, AllCallsAreMadeAsTheyStand) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // in a process of its own
    auto const countOfCalls = [] {
        recorder::ClearCalls();
        BGFXPointLightSource("lamp").Submit();
        return static_cast<int>(recorder::CountCalls("setUniform"));
    };
    EXPECT_EXIT(std::_Exit(countOfCalls()), testing::ExitedWithCode(4), "");
}
