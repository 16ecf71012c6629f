// The two update events: their types, what they carry, and copies.
#include <zx3DQt/UpdateEvents.h>

#include <QPaintEvent>
#include <QResizeEvent>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using namespace zarvex::zx3DQt;

TEST(UpdateFrameBufferEventTest, DefaultCarriesNoSize) {
    EXPECT_FALSE(UpdateFrameBufferEvent().maybeSize().has_value());
}

TEST(UpdateFrameBufferEventTest, CarriesASize) {
    EXPECT_EQ(UpdateFrameBufferEvent(QSize(3, 4)).maybeSize(), QSize(3, 4));
}

TEST(UpdateFrameBufferEventTest, TakesTheNewSizeOfAResizeEvent) {
    QResizeEvent resize(QSize(30, 40), QSize(10, 20));
    EXPECT_EQ(UpdateFrameBufferEvent(&resize).maybeSize(), QSize(30, 40));
}

TEST(UpdateFrameBufferEventTest, ANullResizeEventGivesNoSize) {
    EXPECT_FALSE(UpdateFrameBufferEvent(static_cast<QResizeEvent*>(nullptr)).maybeSize().has_value());
}

TEST(UpdateFrameBufferEventTest, CopiesCarryTheSize) {
    UpdateFrameBufferEvent const event(QSize(3, 4));
    UpdateFrameBufferEvent const copy(event);
    EXPECT_EQ(copy.maybeSize(), QSize(3, 4));
    EXPECT_EQ(copy.type(), UpdateFrameBufferEvent::EventType);
}

TEST(UpdateFrameBufferEventTest, AssignmentTakesOverSizeAndItsAbsence) {
    UpdateFrameBufferEvent event;
    event = UpdateFrameBufferEvent(QSize(3, 4));
    EXPECT_EQ(event.maybeSize(), QSize(3, 4));
    event = UpdateFrameBufferEvent();
    EXPECT_FALSE(event.maybeSize().has_value());
}

TEST(UpdateFrameBufferEventTest, CopiesAndAssignmentsTakeOverTheAcceptedFlag) {
    UpdateFrameBufferEvent event(QSize(3, 4));
    event.ignore();
    EXPECT_FALSE(UpdateFrameBufferEvent(event).isAccepted());
    UpdateFrameBufferEvent assigned;
    assigned = event;
    EXPECT_FALSE(assigned.isAccepted());
}

TEST(UpdateFrameBufferEventTest, ACloneIsAPlainEventOfTheSameType) {
    std::unique_ptr<QEvent> const clone(UpdateFrameBufferEvent(QSize(3, 4)).clone());
    EXPECT_EQ(clone->type(), UpdateFrameBufferEvent::EventType);
    EXPECT_EQ(dynamic_cast<UpdateFrameBufferEvent*>(clone.get()), nullptr);
}

TEST(UpdateViewportEventTest, DefaultCarriesNoRegion) {
    EXPECT_FALSE(UpdateViewportEvent().maybeRegion().has_value());
}

TEST(UpdateViewportEventTest, CarriesARegion) {
    QRegion const region(1, 2, 3, 4);
    EXPECT_EQ(UpdateViewportEvent(region).maybeRegion(), region);
}

TEST(UpdateViewportEventTest, TakesTheRegionOfAPaintEvent) {
    QRegion const region = QRegion(0, 0, 5, 5) + QRegion(10, 10, 5, 5);
    QPaintEvent paint(region);
    EXPECT_EQ(UpdateViewportEvent(&paint).maybeRegion(), region);
}

TEST(UpdateViewportEventTest, ANullPaintEventGivesNoRegion) {
    EXPECT_FALSE(UpdateViewportEvent(static_cast<QPaintEvent*>(nullptr)).maybeRegion().has_value());
}

TEST(UpdateViewportEventTest, AnEmptyRegionIsStillARegion) {
    EXPECT_TRUE(UpdateViewportEvent(QRegion()).maybeRegion().has_value());
}

TEST(UpdateViewportEventTest, CopiesCarryTheRegion) {
    UpdateViewportEvent const event(QRegion(1, 2, 3, 4));
    EXPECT_EQ(UpdateViewportEvent(event).maybeRegion(), QRegion(1, 2, 3, 4));
    EXPECT_FALSE(UpdateViewportEvent(UpdateViewportEvent()).maybeRegion().has_value());
}

TEST(UpdateViewportEventTest, AssignmentOfAnEmptyOneLeavesTheTargetEmpty) {
    UpdateViewportEvent event(QRegion(1, 2, 3, 4));
    event = UpdateViewportEvent();
    EXPECT_FALSE(event.maybeRegion().has_value());
}

TEST(UpdateViewportEventTest, AssignmentTakesOverTheRegion) {
    UpdateViewportEvent event;
    event = UpdateViewportEvent(QRegion(1, 2, 3, 4));
    EXPECT_EQ(event.maybeRegion(), QRegion(1, 2, 3, 4));
    event = UpdateViewportEvent(QRegion(5, 6, 7, 8));
    EXPECT_EQ(event.maybeRegion(), QRegion(5, 6, 7, 8));
}

TEST(UpdateViewportEventTest, ACloneIsAPlainEventOfTheSameType) {
    std::unique_ptr<QEvent> const clone(UpdateViewportEvent(QRegion(1, 2, 3, 4)).clone());
    EXPECT_EQ(clone->type(), UpdateViewportEvent::EventType);
    EXPECT_EQ(dynamic_cast<UpdateViewportEvent*>(clone.get()), nullptr);
}

TEST(UpdateEventsTest, EveryInstanceHasItsClassesType) {
    QResizeEvent resize(QSize(1, 1), QSize());
    QPaintEvent paint(QRect(0, 0, 1, 1));
    EXPECT_EQ(UpdateFrameBufferEvent().type(), UpdateFrameBufferEvent::EventType);
    EXPECT_EQ(UpdateFrameBufferEvent(QSize()).type(), UpdateFrameBufferEvent::EventType);
    EXPECT_EQ(UpdateFrameBufferEvent(&resize).type(), UpdateFrameBufferEvent::EventType);
    EXPECT_EQ(UpdateViewportEvent().type(), UpdateViewportEvent::EventType);
    EXPECT_EQ(UpdateViewportEvent(QRegion()).type(), UpdateViewportEvent::EventType);
    EXPECT_EQ(UpdateViewportEvent(&paint).type(), UpdateViewportEvent::EventType);
}

TEST(UpdateEventsTest, TypesAreRegisteredUserTypesOfTheirOwn) {
    EXPECT_NE(UpdateFrameBufferEvent::EventType, UpdateViewportEvent::EventType);
    for (QEvent::Type const type : {UpdateFrameBufferEvent::EventType, UpdateViewportEvent::EventType}) {
        EXPECT_GT(type, QEvent::User);
        EXPECT_LE(type, QEvent::MaxUser);
    }
}

TEST(UpdateEventsTest, TheFrameBufferTypeIsRegisteredFirst) {
    // Qt hands its types out from the highest down.
    EXPECT_GT(UpdateFrameBufferEvent::EventType, UpdateViewportEvent::EventType);
}

TEST(UpdateEventsTest, DerivePubliclyFromQEventWithAVirtualDestructor) {
    static_assert(std::is_convertible_v<UpdateFrameBufferEvent*, QEvent*>);
    static_assert(std::is_convertible_v<UpdateViewportEvent*, QEvent*>);
    static_assert(std::has_virtual_destructor_v<UpdateFrameBufferEvent>);
    static_assert(std::is_same_v<decltype(UpdateViewportEvent::EventType), QEvent::Type>);
    SUCCEED();
}
