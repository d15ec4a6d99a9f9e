#include "Vantrel/GestureRecognizer.h"

#include <QTest>

#include <vector>

namespace {

using States = std::vector<GestureState>;

/// A target that sees a drag and sets its translation back with each change, as one that follows it does.
struct DragTarget {
    States states;
    std::vector<QPointF> translations;
    bool setsBack = true;
    PanGestureRecognizer pan{[this] { see(); }};

    void see() {
        states.push_back(pan.state());
        translations.push_back(pan.translation());
        if (setsBack && pan.state() == GestureState::changed) {
            pan.setTranslation({});
        }
    }
};

/// A target that sees a pinch.
struct PinchTarget {
    States states;
    std::vector<double> magnifications;
    std::vector<QPointF> locations;
    bool setsBack = true;
    MagnificationGestureRecognizer pinch{[this] { see(); }};

    void see() {
        states.push_back(pinch.state());
        magnifications.push_back(pinch.magnification());
        locations.push_back(pinch.location());
        if (setsBack && pinch.state() != GestureState::ended) {
            pinch.setMagnification(0);
        }
    }
};

} // namespace

class GestureRecognizerTest : public QObject {
    Q_OBJECT

private slots:
    void aDragBeginsChangesAndEnds() {
        DragTarget target;
        target.pan.move({3, 4});
        QCOMPARE(target.states, (States{GestureState::began, GestureState::changed}));
        QCOMPARE(target.translations, (std::vector{QPointF(3, 4), QPointF(3, 4)}));
        target.pan.move({1, -2});
        target.pan.end();
        QCOMPARE(target.states,
            (States{GestureState::began, GestureState::changed, GestureState::changed, GestureState::ended}));
        QCOMPARE(
            target.translations, (std::vector{QPointF(3, 4), QPointF(3, 4), QPointF(1, -2), QPointF(0, 0)}));
        QCOMPARE(target.pan.state(), GestureState::possible);
    }

    void aPinchBeginsChangesAndEnds() {
        PinchTarget target;
        target.pinch.magnify(1.5, {10, 20});
        target.pinch.magnify(0.5, {11, 22});
        target.pinch.end();
        QCOMPARE(target.states, (States{GestureState::began, GestureState::changed, GestureState::ended}));
        QCOMPARE(target.magnifications, (std::vector{0.5, -0.5, 0.0}));
        QCOMPARE(target.locations, (std::vector{QPointF(10, 20), QPointF(11, 22), QPointF(11, 22)}));
        QCOMPARE(target.pinch.state(), GestureState::possible);
    }

    void gesturesThatAreTakenAwayAreCancelled() {
        DragTarget drag;
        drag.pan.move({3, 4});
        drag.pan.cancel();
        QCOMPARE(drag.states, (States{GestureState::began, GestureState::changed, GestureState::cancelled}));
        QCOMPARE(drag.pan.state(), GestureState::possible);
        PinchTarget pinch;
        pinch.pinch.magnify(1.5, {});
        pinch.pinch.cancel();
        QCOMPARE(pinch.states, (States{GestureState::began, GestureState::cancelled}));
        QCOMPARE(pinch.pinch.state(), GestureState::possible);
    }

    void withoutABeginningThereIsNoEnd() {
        DragTarget drag;
        drag.pan.end();
        drag.pan.cancel();
        QCOMPARE(drag.states, States{});
        drag.pan.move({1, 1});
        drag.pan.end();
        drag.pan.end();
        drag.pan.cancel();
        QCOMPARE(drag.states, (States{GestureState::began, GestureState::changed, GestureState::ended}));
        PinchTarget pinch;
        pinch.pinch.end();
        pinch.pinch.cancel();
        QCOMPARE(pinch.states, States{});
    }

    void aSecondGestureBeginsAnew() {
        DragTarget drag;
        drag.pan.move({3, 4});
        drag.pan.end();
        drag.pan.move({5, 6});
        QCOMPARE(drag.states, (States{GestureState::began, GestureState::changed, GestureState::ended,
                                  GestureState::began, GestureState::changed}));
        PinchTarget pinch;
        pinch.pinch.magnify(1.5, {});
        pinch.pinch.cancel();
        pinch.pinch.magnify(1.25, {});
        QCOMPARE(pinch.states, (States{GestureState::began, GestureState::cancelled, GestureState::began}));
    }

    void whatThePreviousGestureLeftIsForgotten() {
        DragTarget drag;
        drag.setsBack = false;
        drag.pan.move({3, 4});
        drag.pan.end();
        drag.pan.move({5, 6});
        QCOMPARE(drag.translations.back(), QPointF(5, 6));
        PinchTarget pinch;
        pinch.setsBack = false;
        pinch.pinch.magnify(1.5, {});
        pinch.pinch.end();
        pinch.pinch.magnify(1.25, {});
        QCOMPARE(pinch.magnifications.back(), 0.25);
    }

    void theWayAddsUpUntilItIsSetBack() {
        DragTarget target;
        target.setsBack = false;
        target.pan.move({3, 4});
        target.pan.move({1, -2});
        QCOMPARE(target.pan.translation(), QPointF(4, 2));
        target.pan.setTranslation({});
        target.pan.move({1, 1});
        QCOMPARE(target.pan.translation(), QPointF(1, 1));
    }

    void theMagnificationMultipliesUntilItIsSetBack() {
        PinchTarget target;
        target.setsBack = false;
        target.pinch.magnify(1.5, {});
        target.pinch.magnify(2, {});
        QCOMPARE(target.pinch.magnification(), 2.0);
        target.pinch.setMagnification(0);
        target.pinch.magnify(1.25, {});
        QCOMPARE(target.pinch.magnification(), 0.25);
    }
};

QTEST_APPLESS_MAIN(GestureRecognizerTest)
#include "GestureRecognizerTest.moc"
