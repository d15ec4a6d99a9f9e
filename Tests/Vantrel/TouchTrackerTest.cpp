#include "Vantrel/TouchTracker.h"

#include <QTest>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using States = std::vector<GestureState>;
using Fingers = std::vector<QPointF>;

/// Follows fingers and keeps what they did: how far they dragged, how much they magnified, and each state on the way.
struct Screen {
    States dragged;
    States pinched;
    QPointF way;
    double magnification = 1;
    PanGestureRecognizer pan{[this] { drag(); }};
    MagnificationGestureRecognizer pinch{[this] { spread(); }};
    TouchTracker tracker{pan, pinch};

    void drag() {
        dragged.push_back(pan.state());
        if (pan.state() == GestureState::changed) {
            way += pan.translation();
            pan.setTranslation({});
        }
    }

    void spread() {
        pinched.push_back(pinch.state());
        magnification *= 1 + pinch.magnification();
        pinch.setMagnification(0);
    }

    void follow(const Fingers& fingers) { tracker.follow(fingers); }

    /// The states since this was asked last.
    static States taken(States& states) { return std::exchange(states, {}); }
};

} // namespace

class TouchTrackerTest : public QObject {
    Q_OBJECT

private slots:
    void oneFingerDrags() {
        Screen screen;
        screen.follow({{100, 100}});
        QCOMPARE(screen.dragged, States{});
        screen.follow({{103, 96}});
        screen.follow({{105, 96}});
        QCOMPARE(screen.way, QPointF(5, -4));
        screen.follow({});
        QCOMPARE(screen.dragged,
            (States{GestureState::began, GestureState::changed, GestureState::changed, GestureState::ended}));
        QCOMPARE(screen.pinched, States{});
    }

    void aFingerThatRestsDoesNothing() {
        Screen screen;
        screen.follow({{100, 100}});
        screen.follow({{100, 100}});
        screen.follow({});
        QCOMPARE(screen.dragged, States{});
        QCOMPARE(screen.pinched, States{});
    }

    void twoFingersThatPartPinchAboutTheirCentre() {
        Screen screen;
        screen.follow({{100, 100}, {200, 100}});
        screen.follow({{50, 100}, {250, 100}});
        QCOMPARE(screen.magnification, 2.0);
        QCOMPARE(screen.pinch.location(), QPointF(150, 100));
        screen.follow({{125, 100}, {175, 100}});
        QCOMPARE(screen.magnification, 0.5);
        QCOMPARE(screen.pinched, (States{GestureState::began, GestureState::changed}));
        QCOMPARE(screen.dragged, States{});
        screen.follow({});
        QCOMPARE(screen.pinched.back(), GestureState::ended);
    }

    void twoFingersDragAndPinchAtOnce() {
        Screen screen;
        screen.follow({{100, 100}, {200, 100}});
        screen.follow({{100, 100}, {300, 100}});
        QCOMPARE(screen.way, QPointF(50, 0));
        QCOMPARE(screen.magnification, 2.0);
        screen.follow({{110, 140}, {310, 140}});
        QCOMPARE(screen.way, QPointF(60, 40));
        QCOMPARE(screen.magnification, 2.0);
        screen.follow({{100, 140}, {320, 140}});
        QCOMPARE(screen.magnification, 2.2);
        screen.follow({});
        QCOMPARE(screen.dragged,
            (States{GestureState::began, GestureState::changed, GestureState::changed, GestureState::ended}));
        QCOMPARE(screen.pinched, (States{GestureState::began, GestureState::changed, GestureState::ended}));
    }

    void aSecondFingerJoinsWithoutAJump() {
        Screen screen;
        screen.follow({{100, 100}});
        screen.follow({{110, 100}});
        screen.follow({{110, 100}, {410, 500}});
        QCOMPARE(screen.way, QPointF(10, 0));
        QCOMPARE(screen.pinched, States{});
        screen.follow({{112, 100}, {412, 500}});
        QCOMPARE(screen.way, QPointF(12, 0));
        QCOMPARE(screen.magnification, 1.0);
        QCOMPARE(std::ranges::count(screen.dragged, GestureState::began), 1);
        QCOMPARE(std::ranges::count(screen.dragged, GestureState::ended), 0);
    }

    void aFingerThatLeavesEndsThePinchAndTheOtherDragsOnWithoutAJump() {
        Screen screen;
        screen.follow({{100, 100}, {200, 100}});
        screen.follow({{90, 100}, {230, 100}});
        Screen::taken(screen.dragged);
        Screen::taken(screen.pinched);
        screen.follow({{90, 100}});
        QCOMPARE(Screen::taken(screen.pinched), States{GestureState::ended});
        QCOMPARE(screen.dragged, States{});
        const QPointF way = screen.way;
        screen.follow({{91, 103}});
        QCOMPARE(screen.way - way, QPointF(1, 3));
        QCOMPARE(screen.dragged, States{GestureState::changed});
    }

    void aThirdFingerJoinsAndLeavesWithoutAJumpInThePinch() {
        Screen screen;
        screen.follow({{100, 100}, {200, 100}});
        screen.follow({{90, 100}, {210, 100}});
        const double magnification = screen.magnification;
        const QPointF way = screen.way;
        screen.follow({{90, 100}, {210, 100}, {900, 900}});
        screen.follow({{210, 100}, {900, 900}});
        QCOMPARE(screen.magnification, magnification);
        QCOMPARE(screen.way, way);
        QCOMPARE(screen.pinched, States{GestureState::began});
    }

    void threeFingersPinch() {
        Screen screen;
        screen.follow({{100, 0}, {-50, 50}, {-50, -50}});
        screen.follow({{150, 0}, {-75, 75}, {-75, -75}});
        QCOMPARE(screen.magnification, 1.5);
        QCOMPARE(screen.way, QPointF(0, 0));
    }

    void fingersThatComeBackBeginAnew() {
        Screen screen;
        screen.follow({{100, 100}});
        screen.follow({{103, 100}});
        screen.follow({});
        Screen::taken(screen.dragged);
        screen.follow({{500, 500}});
        QCOMPARE(screen.way, QPointF(3, 0));
        QCOMPARE(screen.dragged, States{});
        screen.follow({{500, 501}});
        QCOMPARE(screen.way, QPointF(3, 1));
        QCOMPARE(screen.dragged, (States{GestureState::began, GestureState::changed}));
    }

    void fingersThatAreTakenAwayCancelBoth() {
        Screen screen;
        screen.follow({{100, 100}, {200, 100}});
        screen.follow({{100, 100}, {220, 100}});
        screen.tracker.cancel();
        QCOMPARE(screen.dragged.back(), GestureState::cancelled);
        QCOMPARE(screen.pinched.back(), GestureState::cancelled);
        const QPointF way = screen.way;
        screen.follow({{700, 100}, {720, 100}});
        screen.follow({});
        QCOMPARE(screen.way, way);
        QCOMPARE(screen.dragged.back(), GestureState::cancelled);
        QCOMPARE(screen.pinched.back(), GestureState::cancelled);
    }

    void fingersOnTheSameSpotMagnifyNothing() {
        Screen screen;
        screen.follow({{100, 100}, {100, 100}});
        screen.follow({{90, 100}, {110, 100}});
        QCOMPARE(screen.pinched, States{});
        screen.follow({{100, 100}, {100, 100}});
        QCOMPARE(screen.pinched, States{});
        screen.follow({{100, 100}, {100, 100}});
        screen.follow({{80, 100}, {120, 100}});
        screen.follow({{70, 100}, {130, 100}});
        QCOMPARE(screen.magnification, 1.5);
    }
};

QTEST_APPLESS_MAIN(TouchTrackerTest)
#include "TouchTrackerTest.moc"
