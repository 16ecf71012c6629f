// What is written comes back, and what is damaged does not.
#include <MeshFile.h>

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>

namespace viewer {

namespace {

MeshPiece MakePiece(std::uint32_t material, std::size_t triangles) {
    MeshPiece piece;
    piece.material = material;
    for (std::size_t i = 0; i < 3 * triangles; ++i) {
        auto const x = static_cast<float>(i + 100 * material);
        piece.vertices.emplace_back(bx::Vec3(x, 2 * x, -x), bx::Vec3(0, 0, 1),
                                    zarvex::zx3D::Color{1, 0, 1, 1});
        piece.indices.push_back(static_cast<std::uint16_t>(i));
        piece.box.Extend(QVector3D(x, 2 * x, -x));
    }
    piece.edges = {0, 1, 1, 2};
    return piece;
}

MeshContent MakeContent() {
    MeshContent content;
    content.zIsUp = true;
    content.materials.resize(2);
    content.materials[1].shininess = 77.0f;
    content.pieces = {MakePiece(0, 1), MakePiece(1, 5)}; // three indices: the next array begins at no word
    return content;
}

QByteArray BytesOf(MeshContent const& content) {
    QTemporaryFile file;
    EXPECT_TRUE(file.open());
    EXPECT_TRUE(WriteMesh(file, content));
    file.seek(0);
    return file.readAll();
}

std::shared_ptr<MeshFile const> OpenBytes(QByteArray const& bytes) {
    QTemporaryFile file;
    EXPECT_TRUE(file.open());
    file.write(bytes);
    file.flush();
    return MeshFile::Open(file.fileName());
}

} // namespace

TEST(MeshFileTest, WhateverTheNumberOfMaterialsIsAlignedForItsType) {
    for (std::size_t count = 1; count <= 3; ++count) {
        MeshContent content = MakeContent();
        content.materials.resize(count);
        content.pieces = {MakePiece(0, 1)};
        auto const file = OpenBytes(BytesOf(content));
        ASSERT_NE(file, nullptr);
        ASSERT_EQ(file->GetMaterials().size(), count);
    }
    EXPECT_EQ(sizeof(MeshMaterial) % alignof(std::uint64_t), 0u);
}

TEST(MeshFileTest, WhatIsWrittenComesBack) {
    MeshContent const content = MakeContent();
    auto const file = OpenBytes(BytesOf(content)); // whose name is gone by now
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->IsZUp());
    ASSERT_EQ(file->GetMaterials().size(), 2u);
    EXPECT_EQ(file->GetMaterials()[1].shininess, 77.0f);
    ASSERT_EQ(file->GetPieces().size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        MeshFile::Piece const& piece = file->GetPieces()[i];
        MeshPiece const& expected = content.pieces[i];
        EXPECT_EQ(piece.material, expected.material);
        EXPECT_EQ(piece.primitive, expected.primitive);
        EXPECT_EQ(piece.box.min, expected.box.min);
        EXPECT_EQ(piece.box.max, expected.box.max);
        auto const vertices = file->GetVertices().subspan(piece.vertices.first, piece.vertices.count);
        ASSERT_EQ(vertices.size(), expected.vertices.size());
        EXPECT_EQ(std::memcmp(vertices.data(), expected.vertices.data(), vertices.size_bytes()), 0);
        auto const indices = file->GetIndices().subspan(piece.indices.first, piece.indices.count);
        EXPECT_TRUE(std::ranges::equal(indices, expected.indices));
        auto const edges = file->GetEdges().subspan(piece.edges.first, piece.edges.count);
        EXPECT_TRUE(std::ranges::equal(edges, expected.edges));
    }
}

TEST(MeshFileTest, EveryTruncationIsRefused) {
    QByteArray const bytes = BytesOf(MakeContent());
    for (qsizetype size = 0; size < bytes.size(); ++size)
        ASSERT_EQ(OpenBytes(bytes.left(size)), nullptr) << size;
}

TEST(MeshFileTest, ClaimsBeyondTheFileAreRefused) {
    QByteArray const bytes = BytesOf(MakeContent());
    int refused = 0;
    for (qsizetype place = 0; place + 8 <= 200; place += 4) {
        QByteArray damaged = bytes;
        std::memset(damaged.data() + place, 0xff, 8);
        // What is no count may be anything; reading all of what was taken must be safe.
        if (auto const file = OpenBytes(damaged); file == nullptr)
            ++refused;
        else
            for (MeshFile::Piece const& piece : file->GetPieces())
                EXPECT_EQ(file->GetVertices().subspan(piece.vertices.first, piece.vertices.count).size(),
                          piece.vertices.count);
    }
    EXPECT_GT(refused, 10);
}

namespace {

/// Whether a mesh with one damaged piece can be opened.
template<typename Damage>
bool Opens(Damage damage) {
    MeshContent content = MakeContent();
    damage(content, content.pieces[1]);
    return OpenBytes(BytesOf(content)) != nullptr;
}

} // namespace

TEST(MeshFileTest, IndicesBeyondTheVerticesOfTheirPieceAreRefused) {
    auto const last = static_cast<std::uint16_t>(MakeContent().pieces[1].vertices.size() - 1);
    EXPECT_TRUE(Opens([&](MeshContent&, MeshPiece& piece) { piece.indices[4] = last; }));
    EXPECT_TRUE(Opens([&](MeshContent&, MeshPiece& piece) { piece.edges[3] = last; }));
    for (int const index : {last + 1, 65535}) {
        auto const beyond = static_cast<std::uint16_t>(index);
        EXPECT_FALSE(Opens([&](MeshContent&, MeshPiece& piece) { piece.indices[4] = beyond; }));
        EXPECT_FALSE(Opens([&](MeshContent&, MeshPiece& piece) { piece.edges[3] = beyond; }));
    }
}

TEST(MeshFileTest, PrimitivesThatAreNoneAreRefused) {
    for (std::uint32_t const primitive : {0u, 4u, 0xffffffffu})
        EXPECT_FALSE(Opens(
            [&](MeshContent&, MeshPiece& piece) { piece.primitive = static_cast<Primitive>(primitive); }));
    EXPECT_FALSE(Opens([](MeshContent&, MeshPiece& piece) { piece.indices.pop_back(); }));
    EXPECT_FALSE(Opens([](MeshContent&, MeshPiece& piece) { piece.edges.pop_back(); }));
    EXPECT_FALSE(Opens([](MeshContent&, MeshPiece& piece) { piece.indices.clear(); }));
    EXPECT_FALSE(Opens([](MeshContent&, MeshPiece& piece) { piece.vertices.clear(); }));
    EXPECT_FALSE(
        Opens([](MeshContent&, MeshPiece& piece) { piece.vertices.resize(65536, piece.vertices[0]); }));
    EXPECT_FALSE(Opens([](MeshContent& content, MeshPiece&) { content.pieces.clear(); }));
}

TEST(MeshFileTest, PlacesAndMaterialsThatAreNoNumbersAreRefused) {
    for (float const value : {NAN, INFINITY, -INFINITY, 1e15f}) {
        EXPECT_FALSE(Opens([&](MeshContent&, MeshPiece& piece) { piece.vertices[7].position.y = value; }));
        if (!std::isfinite(value)) {
            EXPECT_FALSE(
                Opens([&](MeshContent& content, MeshPiece&) { content.materials[1].shininess = value; }));
        }
    }
    EXPECT_FALSE(Opens([](MeshContent& content, MeshPiece&) { content.materials.resize(10'001); }));
    EXPECT_FALSE(Opens([](MeshContent&, MeshPiece& piece) { piece.material = 2; }));
}

TEST(MeshFileTest, MoreIndicesThanABufferHoldsAreRefusedUnread) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    MeshContent content = MakeContent();
    content.pieces.resize(1);
    content.pieces[0].edges.clear();
    ASSERT_TRUE(WriteMesh(file, content));
    std::uint64_t const count = 3ull << 30;
    qint64 const header = 48; // what precedes the materials, without the number of bytes of notes
    qint64 const countInHeader = header - 16;
    qint64 const record = header + 8 + 2 * qint64{sizeof(MeshMaterial)};
    for (qint64 const place : {countInHeader, record + 16}) {
        file.seek(place);
        file.write(reinterpret_cast<char const*>(&count), sizeof count);
    }
    ASSERT_TRUE(file.resize(file.size() + 2 * static_cast<qint64>(count))); // of holes
    file.flush();
    EXPECT_EQ(MeshFile::Open(file.fileName()), nullptr);
}

TEST(MeshFileTest, NotesComeBackAsPlainLines) {
    MeshContent content = MakeContent();
    content.notes = {"a.png is left out", "escape \033[31m", QString(5000, 'x')};
    auto const file = OpenBytes(BytesOf(content));
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(file->GetNotes().size(), 3);
    EXPECT_EQ(file->GetNotes()[0], "a.png is left out");
    EXPECT_EQ(file->GetNotes()[1], "escape ?[31m");
    EXPECT_LE(file->GetNotes()[2].size(), 300);
    content.notes = {QString(1'000'000, 'y')};
    EXPECT_LT(BytesOf(content).size(), 100'000);
}

TEST(MeshFileTest, WhateverIsDamagedWhatIsOpenedCanBeDrawn) {
    QByteArray const bytes = BytesOf(MakeContent());
    std::minstd_rand random(1);
    int opened = 0;
    for (int i = 0; i < 3000; ++i) {
        QByteArray damaged = bytes;
        for (int damage = 0; damage < 3; ++damage)
            damaged[static_cast<qsizetype>(random() % damaged.size())] = static_cast<char>(random());
        auto const file = OpenBytes(damaged);
        if (file == nullptr)
            continue;
        ++opened;
        for (MeshFile::Piece const& piece : file->GetPieces()) {
            ASSERT_LT(piece.material, file->GetMaterials().size());
            for (std::uint16_t const index :
                 file->GetIndices().subspan(piece.indices.first, piece.indices.count))
                ASSERT_LT(index, piece.vertices.count);
            for (std::uint16_t const index : file->GetEdges().subspan(piece.edges.first, piece.edges.count))
                ASSERT_LT(index, piece.vertices.count);
            ASSERT_TRUE(std::isfinite(piece.box.Radius()));
        }
    }
    EXPECT_GT(opened, 100);
}

TEST(MeshFileTest, OtherFilesAreRefused) {
    EXPECT_EQ(MeshFile::Open("/no/such/file"), nullptr);
    EXPECT_EQ(OpenBytes(QByteArray(1000, 'x')), nullptr);
}

} // namespace viewer
