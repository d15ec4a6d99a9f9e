#pragma once

#include <QPointF>

#include <functional>

/// What became of a gesture, as its target is told.
enum class GestureState { possible = 0, began = 1, changed = 2, ended = 3, cancelled = 4, failed = 5 };

/// The course of one gesture: tells the target that it began, changed, and ended or was cancelled. Main thread.
class GestureRecognizer {
public:
    explicit GestureRecognizer(std::function<void()> action) : m_action(std::move(action)) {}
    GestureRecognizer(const GestureRecognizer&) = delete;
    GestureRecognizer& operator=(const GestureRecognizer&) = delete;

    GestureState state() const { return m_state; }

    /// The fingers have left. Nothing where the gesture had not begun.
    void end() { finish(GestureState::ended); }

    /// The system took the gesture away. Nothing where it had not begun.
    void cancel() { finish(GestureState::cancelled); }

protected:
    ~GestureRecognizer() = default;

    bool isUnderWay() const { return m_state == GestureState::began || m_state == GestureState::changed; }
    void enter(GestureState state);

private:
    void finish(GestureState state);

    const std::function<void()> m_action;
    GestureState m_state = GestureState::possible;
};

/// A drag, by the mouse or by fingers.
class PanGestureRecognizer final : public GestureRecognizer {
public:
    using GestureRecognizer::GestureRecognizer;

    /// Points moved since the target last set it back.
    QPointF translation() const { return m_translation; }
    void setTranslation(QPointF translation) { m_translation = translation; }

    /// The pointer has moved. The first move begins the gesture and is at once the first change, so that none of the
    /// way is lost.
    void move(QPointF delta);

private:
    QPointF m_translation;
};

/// A pinch, on a touchpad or a touch screen.
class MagnificationGestureRecognizer final : public GestureRecognizer {
public:
    using GestureRecognizer::GestureRecognizer;

    /// By how much more than its size the picture has grown since the target last set it back: 0.5 is half as large
    /// again.
    double magnification() const { return m_magnification; }
    void setMagnification(double magnification) { m_magnification = magnification; }

    /// Where the gesture is: points of the view, growing upward.
    QPointF location() const { return m_location; }

    /// The fingers have spread to that multiple of their distance before, about that place.
    void magnify(double factor, QPointF location);

private:
    double m_magnification = 0;
    QPointF m_location;
};
