// zx3D::ContextListener: who is told of the context's end, in which order, and what they may do then.
#include <zx3D/ContextListener.h>

#include <zx3D/Context.h>

#include <Fixtures.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace zarvex::zx3D;
using testing::ElementsAre;

namespace {

class Listener final : private ContextListener {
public:
    explicit Listener(std::function<void()> onStopping) : m_onStopping(std::move(onStopping)) {}

private:
    void OnContextStopping() override {
        auto const onStopping = m_onStopping; // may destroy this
        onStopping();
    }

    std::function<void()> m_onStopping;
};

class ContextListenerTest : public ContextFixture {
protected:
    std::unique_ptr<Listener> Make(std::string name, std::function<void()> const& act = [] {}) {
        return std::make_unique<Listener>([this, name, act] {
            EXPECT_TRUE(recorder::IsRunning()) << name;
            m_told.push_back(name);
            act();
        });
    }

    std::vector<std::string> m_told;
};

} // namespace

TEST_F(ContextListenerTest, TheNewestIsToldFirst) {
    auto const a = Make("a");
    auto const b = Make("b");
    auto const c = Make("c");
    Context::Shutdown();
    EXPECT_THAT(m_told, ElementsAre("c", "b", "a"));
    Context::Shutdown();
    EXPECT_EQ(m_told.size(), 3u) << "none runs";
}

TEST_F(ContextListenerTest, AListenerMayDestroyItself) {
    auto const a = Make("a");
    std::unique_ptr<Listener> b;
    b = Make("b", [&b] { b.reset(); });
    auto const c = Make("c");
    Context::Shutdown();
    EXPECT_THAT(m_told, ElementsAre("c", "b", "a"));
}

TEST_F(ContextListenerTest, AListenerMayDestroyOthers) {
    std::vector<std::unique_ptr<Listener>> others;
    auto const a = Make("a");
    others.push_back(Make("not told"));
    others.push_back(Make("not told either"));
    auto const b = Make("b", [&others] { others.clear(); });
    others.push_back(Make("c"));
    Context::Shutdown();
    EXPECT_THAT(m_told, ElementsAre("c", "b", "a"));
}

TEST_F(ContextListenerTest, AListenerThatIsNewIsToldToo) {
    std::unique_ptr<Listener> late;
    auto const a = Make("a", [&] { late = Make("late"); });
    Context::Shutdown();
    EXPECT_THAT(m_told, ElementsAre("a", "late"));
}
