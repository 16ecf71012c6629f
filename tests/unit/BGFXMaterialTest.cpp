// Materials: which uniforms they create, set and destroy, and what their builder leaves behind.
#include <Fixtures.h>
#include <LogCapture.h>

#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/Library.h>

#include <QColor>

#include <optional>
#include <type_traits>

using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

static_assert(!std::is_copy_constructible_v<BGFXMaterial> && !std::is_copy_assignable_v<BGFXMaterial>);

class BGFXMaterialTest : public LibraryFixture {
protected:
    /// One whose colours and name can be told apart.
    static BGFXMaterial Sample() {
        return {"mat", Qt::red, Qt::green, Qt::blue, QColor(255, 255, 0, 51), 8.0f};
    }

    /// The texts of the calls that submitting makes.
    static std::vector<std::string> Submitted(BGFXMaterial const& material) {
        recorder::ClearCalls();
        material.Submit();
        return recorder::CallTexts();
    }

    /// The same of a material that has no uniforms yet.
    static std::vector<std::string> SubmittedAnew(BGFXMaterial& material) {
        material.CreateUniforms();
        std::vector<std::string> texts = Submitted(material);
        material.DestroyUniforms();
        return texts;
    }
};

using BGFXMaterialBuilderTest = BGFXMaterialTest;

} // namespace

TEST_F(BGFXMaterialTest, NoConstructorCallsBgfx) {
    {
        BGFXMaterial const unnamed;
        BGFXMaterial const named("mat");
        BGFXMaterial const sample = Sample();
    }
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXMaterialTest, CreatesItsUniformsInOrderUnderItsName) {
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createUniform(mat_ambient, Vec4, 1)", "createUniform(mat_diffuse, Vec4, 1)",
                            "createUniform(mat_specular, Vec4, 1)", "createUniform(mat_emission, Vec4, 1)",
                            "createUniform(mat_shininess, Vec4, 1)"));
}

TEST_F(BGFXMaterialTest, WithoutANameTheSuffixesAreTheNames) {
    BGFXMaterial material;
    material.CreateUniforms();
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("createUniform(_ambient, Vec4, 1)", "createUniform(_diffuse, Vec4, 1)",
                            "createUniform(_specular, Vec4, 1)", "createUniform(_emission, Vec4, 1)",
                            "createUniform(_shininess, Vec4, 1)"));
}

TEST_F(BGFXMaterialTest, SubmitsItsValuesInOrder) {
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    EXPECT_THAT(Submitted(material),
                ElementsAre("setUniform(mat_ambient, 1, 0, 0, 1)", "setUniform(mat_diffuse, 0, 1, 0, 1)",
                            "setUniform(mat_specular, 0, 0, 1, 1)", "setUniform(mat_emission, 1, 1, 0, 0.2)",
                            "setUniform(mat_shininess, 8, 0, 0, 0)"));
}

TEST_F(BGFXMaterialTest, IsBlackAndTransparentWithoutShininessAtFirst) {
    BGFXMaterial material("mat");
    material.CreateUniforms();
    EXPECT_THAT(Submitted(material),
                ElementsAre("setUniform(mat_ambient, 0, 0, 0, 0)", "setUniform(mat_diffuse, 0, 0, 0, 0)",
                            "setUniform(mat_specular, 0, 0, 0, 0)", "setUniform(mat_emission, 0, 0, 0, 0)",
                            "setUniform(mat_shininess, 0, 0, 0, 0)"));
}

TEST_F(BGFXMaterialTest, SettersOnlyStore) {
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    recorder::ClearCalls();
    material.SetAmbient(Qt::white);
    material.SetDiffuse(Qt::cyan);
    material.SetSpecular(Qt::magenta);
    material.SetShininess(32.0f);
    material.SetName("other");
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(Submitted(material),
                ElementsAre("setUniform(mat_ambient, 1, 1, 1, 1)", "setUniform(mat_diffuse, 0, 1, 1, 1)",
                            "setUniform(mat_specular, 1, 0, 1, 1)", "setUniform(mat_emission, 1, 1, 0, 0.2)",
                            "setUniform(mat_shininess, 32, 0, 0, 0)"));
}

TEST_F(BGFXMaterialTest, ANewNameCountsFromTheNextCreation) {
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    material.SetName("other");
    material.DestroyUniforms();
    EXPECT_EQ(SubmittedAnew(material).front(), "setUniform(other_ambient, 1, 0, 0, 1)");
}

TEST_F(BGFXMaterialTest, SetEmissionSetsTheSpecularColorAndKeepsTheEmission) {
    BGFXMaterial material = Sample();
    material.SetEmission(Qt::red);
    material.CreateUniforms();
    EXPECT_THAT(Submitted(material),
                ElementsAre("setUniform(mat_ambient, 1, 0, 0, 1)", "setUniform(mat_diffuse, 0, 1, 0, 1)",
                            "setUniform(mat_specular, 1, 0, 0, 1)", "setUniform(mat_emission, 1, 1, 0, 0.2)",
                            "setUniform(mat_shininess, 8, 0, 0, 0)"));
}

TEST_F(BGFXMaterialTest, DestroysEachUniformOnceInOrder) {
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    std::vector<std::string> destructions;
    for (recorder::Call const& call : recorder::Calls())
        destructions.push_back("destroy(" + call.result + ")");
    recorder::ClearCalls();
    material.DestroyUniforms();
    material.DestroyUniforms();
    EXPECT_EQ(recorder::CallTexts(), destructions);
}

TEST_F(BGFXMaterialTest, TheDestructorDestroysTheUniforms) {
    {
        BGFXMaterial material = Sample();
        material.CreateUniforms();
    }
    EXPECT_EQ(recorder::CountCalls("destroy"), 5u);
}

TEST_F(BGFXMaterialTest, CreatingTwiceDestroysNothing) {
    ExpectLeaks();
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    material.CreateUniforms();
    EXPECT_EQ(recorder::CountCalls("createUniform"), 10u);
    EXPECT_EQ(recorder::CountCalls("destroy"), 0u);
}

TEST_F(BGFXMaterialTest, MoveConstructionHandsOverTheUniforms) {
    std::optional<BGFXMaterial> source = Sample();
    source->CreateUniforms();
    recorder::ClearCalls();
    BGFXMaterial target(std::move(*source));
    source.reset();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(Submitted(target).front(), "setUniform(mat_ambient, 1, 0, 0, 1)");
    target.DestroyUniforms();
    EXPECT_EQ(recorder::CountCalls("destroy"), 5u);
}

TEST_F(BGFXMaterialTest, AfterMoveAssignmentBothHaveTheUniforms) {
    ExpectLeaks();
    BGFXMaterial target("old");
    target.CreateUniforms();
    BGFXMaterial source = Sample();
    // Once for each of the two that will destroy them.
    source.CreateUniforms();
    source.CreateUniforms();
    recorder::ClearCalls();
    target = std::move(source);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_EQ(Submitted(target).front(), "setUniform(mat_ambient, 1, 0, 0, 1)");
    EXPECT_EQ(Submitted(source), Submitted(target));
}

TEST_F(BGFXMaterialTest, UniformsGoWhenTheContextStops) {
    BGFXMaterial material = Sample();
    material.CreateUniforms();
    recorder::ClearCalls();
    Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    recorder::ClearCalls();
    material.DestroyUniforms();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(BGFXMaterialTest, WithoutUniformsOfThisRunItIsLeftOutWithOneWarning) {
    LogCapture const log;
    BGFXMaterial material("forgotten");
    EXPECT_THAT(Submitted(material), IsEmpty());
    Shutdown();
    EXPECT_THAT(Submitted(material), IsEmpty());
    material.CreateUniforms();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    ASSERT_TRUE(Init(false));
    EXPECT_THAT(Submitted(material), IsEmpty());
    std::vector<std::string> warnings;
    for (LogLine const& line : log.Lines()) {
        if (line.level == QtWarningMsg)
            warnings.push_back(line.text);
    }
    EXPECT_THAT(warnings, ElementsAre(testing::HasSubstr("[uniform.missing]")));
    EXPECT_THAT(SubmittedAnew(material), SizeIs(5));
}

TEST_F(BGFXMaterialBuilderTest, BuildsWhatItWasTold) {
    BGFXMaterial material = BGFXMaterialBuilder()
                                .SetAmbient(Qt::red)
                                .SetDiffuse(Qt::green)
                                .SetSpecular(Qt::blue)
                                .SetShininess(8.0f)
                                .SetName("mat")
                                .Build();
    EXPECT_THAT(recorder::Calls(), IsEmpty());
    EXPECT_THAT(SubmittedAnew(material),
                ElementsAre("setUniform(mat_ambient, 1, 0, 0, 1)", "setUniform(mat_diffuse, 0, 1, 0, 1)",
                            "setUniform(mat_specular, 0, 0, 1, 1)", "setUniform(mat_emission, 0, 0, 0, 0)",
                            "setUniform(mat_shininess, 8, 0, 0, 0)"));
}

TEST_F(BGFXMaterialBuilderTest, SetEmissionSetsTheSpecularColor) {
    BGFXMaterial material = BGFXMaterialBuilder().SetName("mat").SetEmission(Qt::red).Build();
    std::vector<std::string> const texts = SubmittedAnew(material);
    ASSERT_THAT(texts, SizeIs(5));
    EXPECT_EQ(texts[2], "setUniform(mat_specular, 1, 0, 0, 1)");
    EXPECT_EQ(texts[3], "setUniform(mat_emission, 0, 0, 0, 0)");
}

TEST_F(BGFXMaterialBuilderTest, ASecondMaterialHasTheColorsAndNoName) {
    BGFXMaterialBuilder builder;
    builder.SetName("a name too long to be stored within the string").SetAmbient(Qt::red).SetShininess(8.0f);
    BGFXMaterial const first = builder.Build();
    BGFXMaterial second = builder.Build();
    EXPECT_THAT(SubmittedAnew(second),
                ElementsAre("setUniform(_ambient, 1, 0, 0, 1)", "setUniform(_diffuse, 0, 0, 0, 0)",
                            "setUniform(_specular, 0, 0, 0, 0)", "setUniform(_emission, 0, 0, 0, 0)",
                            "setUniform(_shininess, 8, 0, 0, 0)"));
}
