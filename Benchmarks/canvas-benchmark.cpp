// canvas-benchmark PHOTO24MP PHOTO100MP: what looking closely at a photo costs, on the canvas that the application
// shows it in, on its threads and its decoder, in a window of 1600 x 1000.
//
// Prints the memory that a full-size picture takes and gives back; how long each frame of a pan and of a zoom takes,
// beside the same places drawn by one image node with the whole picture as its texture; the longest frame while a
// full decode of the larger photo arrives; the memory held over 2,000 photos walked through; and what halving costs
// beside QImage's own scaling.
#include "Benchmarks/Measuring.h"
#include "Platform/Halving.h"
#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Platform/SystemTaskScheduler.h"
#include "Vantrel/PhotoCanvasView.h"
#include "Vantrel/ZoomableImageView.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QTimer>
#include <QWheelEvent>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using Platform::FileURL;
using Platform::Image;

namespace {

constexpr QSize viewSize(1600, 1000);
constexpr int handedInSide = 1200;
constexpr std::chrono::seconds patience(60);
constexpr int notch = 120; // of a wheel, in eighths of a degree

// Measuring

void forgetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

/// The most resident memory since it was last forgotten, in MiB.
double peakMemory() {
    std::ifstream status("/proc/self/status");
    std::string name;
    double kibibytes = 0;
    while (status >> name && name != "VmHWM:") {
    }
    status >> kibibytes;
    return kibibytes / 1024;
}

/// What the pixels of a picture take at 4 bytes each, in MiB.
double pixelMemory(const QImage& pixels) {
    return 4.0 * pixels.width() * pixels.height() / (1 << 20);
}

[[noreturn]] void fail(const char* reason) {
    std::fprintf(stderr, "canvas-benchmark: %s\n", reason);
    std::exit(1);
}

/// How long frames took, in milliseconds.
struct FrameTimes {
    std::vector<double> whole;   // from the event until the frame is on the screen
    std::vector<double> drawing; // the part of it after the pause that the platform makes before each frame
};

void print(const std::string& what, const std::vector<double>& times) {
    std::printf("%s, %zu frames: median %.2f ms, 95%% %.2f ms, most %.2f ms\n", what.c_str(), times.size(),
        percentile(times, 0.5), percentile(times, 0.95), percentile(times, 1));
}

// Showing

/// A window whose frames can be waited for.
class Stage : public QQuickWindow {
public:
    Stage() {
        setColor(Qt::black);
        resize(viewSize);
        show();
        connect(this, &QQuickWindow::afterAnimating, this, [this] { m_drawing.start(); });
    }

    /// Does the action and returns when the frame that it asks for is on the screen.
    void draw(
        const std::function<void()>& action = [] {}, FrameTimes* times = nullptr) {
        QElapsedTimer timer;
        QEventLoop loop;
        connect(this, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
        timer.start();
        action();
        update();
        loop.exec();
        if (times) {
            times->whole.push_back(milliseconds(timer));
            times->drawing.push_back(milliseconds(m_drawing));
        }
    }

    /// Draws frame upon frame until all is done and a while longer.
    /// @return the times from each frame to the next, in milliseconds
    std::vector<double> drawUntil(const std::function<bool()>& isDone) {
        constexpr int framesAfterwards = 60;
        int framesLeft = framesAfterwards;
        std::vector<double> times;
        draw();
        QElapsedTimer timer;
        QEventLoop loop;
        connect(this, &QQuickWindow::frameSwapped, &loop, [&] {
            times.push_back(milliseconds(timer));
            timer.start();
            framesLeft -= isDone() ? 1 : 0;
            framesLeft > 0 ? update() : loop.quit();
        });
        QTimer::singleShot(patience, &loop, [] { fail("what was waited for does not come"); });
        timer.start();
        update();
        loop.exec();
        return times;
    }

private:
    QElapsedTimer m_drawing;
};

/// A photo as the application has it: its file and a picture to begin with.
struct Photo {
    FileURL url;
    Image image;
};

/// The application's photo canvas, used by wheel and mouse.
class Canvas {
public:
    Canvas() : m_view(m_stage.contentItem()) {
        m_view.setProperty(
            "taskScheduler", QVariant::fromValue(static_cast<Platform::TaskScheduler*>(&m_scheduler)));
        m_view.setSize(viewSize);
        m_stage.draw();
    }

    Stage& stage() { return m_stage; }

    /// Shows another photo with one frame.
    void walkTo(const Photo& photo) {
        m_stage.draw([&] {
            m_view.setFullResURL(photo.url);
            m_view.setImage(photo.image);
        });
    }

    void turnWheel(QPointF position, int angle) {
        QWheelEvent event(position, m_stage.mapToGlobal(position), QPoint(), {0, angle}, Qt::NoButton,
            Qt::ControlModifier, Qt::NoScrollPhase, false);
        m_sinceWheel.start();
        QCoreApplication::sendEvent(&m_stage, &event);
    }

    /// Milliseconds since the wheel's last step.
    double sinceWheel() const { return milliseconds(m_sinceWheel); }

    void moveMouse(QEvent::Type type, QPointF position) {
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const auto buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, position, m_stage.mapToGlobal(position), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&m_stage, &event);
    }

    /// Zooms in at the top left corner until no level but the full size will do.
    void zoomToFullSize() {
        while (PhotoCanvasView::resolutionFor(view().neededPixels()) != PhotoCanvasView::fullSize) {
            m_stage.draw([&] { turnWheel({1, 1}, notch); });
        }
    }

    bool isFullSize() { return view().loadedMaxPixels() == PhotoCanvasView::fullSize; }

    /// Returns when the full size has come and all of it that the view wants is drawn.
    void waitForFullSize() {
        constexpr int framesUntilComplete = 30;
        QEventLoop loop;
        const auto leaveIfThere = [&] {
            if (isFullSize()) {
                loop.quit();
            }
        };
        QObject::connect(&m_view, &ZoomableImageView::resolutionInfoChanged, &loop, leaveIfThere);
        QTimer::singleShot(patience, &loop, [] { fail("the full size does not come"); });
        if (!isFullSize()) {
            loop.exec();
        }
        for (int frame = 0; frame < framesUntilComplete; ++frame) {
            m_stage.draw();
        }
    }

    double zoomScale() { return view().geometry().zoomScale; }
    const QImage& fullSizePixels() { return view().displayImage().pixels(); }

    /// Where the whole photo is, from the view's top left corner.
    QRectF photoRect() {
        const CanvasGeometry& geometry = view().geometry();
        const QSizeF size = geometry.imageSize * geometry.zoomScale;
        const double top = geometry.viewSize.height() - geometry.imageOffset.y() - size.height();
        return {QPointF(geometry.imageOffset.x(), top), size};
    }

private:
    PhotoCanvasView& view() { return *m_view.findChild<PhotoCanvasView*>(); }

    Platform::SystemTaskScheduler m_scheduler;
    Stage m_stage;
    ZoomableImageView m_view;
    QElapsedTimer m_sinceWheel;
};

/// The peer: one image node with one texture of the whole picture.
class PlainPhoto : public QQuickItem {
public:
    explicit PlainPhoto(const QImage& pixels) : m_pixels(pixels) {
        setFlag(ItemHasContents);
        setSize(viewSize);
    }

    void setPhotoRect(const QRectF& rect) {
        m_rect = rect;
        update();
    }

protected:
    QSGNode* updatePaintNode(QSGNode* oldNode, UpdatePaintNodeData*) override {
        auto* node = static_cast<QSGImageNode*>(oldNode);
        if (!node) {
            node = window()->createImageNode();
            node->setOwnsTexture(true);
            node->setTexture(window()->createTextureFromImage(m_pixels, QQuickWindow::TextureIsOpaque));
            node->setFiltering(QSGTexture::Linear);
        }
        node->setRect(m_rect);
        return node;
    }

private:
    const QImage m_pixels;
    QRectF m_rect;
};

// The measurements

/// Frames of the canvas, and of the peer at the same places. They take turns, so that what else the machine does
/// meets both.
class Comparison {
public:
    explicit Comparison(Canvas& canvas) : m_canvas(canvas), m_plainPhoto(canvas.fullSizePixels()) {
        m_plainPhoto.setParentItem(m_plainStage.contentItem());
        m_plainStage.draw([&] { m_plainPhoto.setPhotoRect(m_canvas.photoRect()); });
    }

    void draw(const std::function<void()>& event) {
        constexpr std::size_t framesPerTurn = 25;
        m_canvas.stage().draw(event, &m_times);
        m_places.push_back(m_canvas.photoRect());
        if (m_places.size() == framesPerTurn) {
            drawPlainly();
        }
    }

    void report(const std::string& what) {
        drawPlainly();
        print(what + ", event to screen", m_times.whole);
        print(what + ", of which drawing", m_times.drawing);
        print(what + " of one image node, request to screen", m_plainTimes.whole);
        print(what + " of one image node, of which drawing", m_plainTimes.drawing);
        const auto ratio = [](const std::vector<double>& ours, const std::vector<double>& theirs) {
            return percentile(ours, 0.95) / percentile(theirs, 0.95);
        };
        std::printf("%s, canvas to one image node at 95%%: %.2f to the screen, %.2f in drawing\n",
            what.c_str(), ratio(m_times.whole, m_plainTimes.whole),
            ratio(m_times.drawing, m_plainTimes.drawing));
    }

private:
    void drawPlainly() {
        for (const QRectF& place : m_places) {
            m_plainStage.draw([&] { m_plainPhoto.setPhotoRect(place); }, &m_plainTimes);
        }
        m_places.clear();
    }

    Canvas& m_canvas;
    FrameTimes m_times;
    std::vector<QRectF> m_places; // that the peer has still to draw
    Stage m_plainStage;
    PlainPhoto m_plainPhoto;
    FrameTimes m_plainTimes;
};

/// Drags the photo round in a rectangle, from its top left corner, in strokes as long as the window allows.
void measurePan(Canvas& canvas) {
    constexpr int movesPerStroke = 50;
    const QPointF middle(viewSize.width() / 2.0, viewSize.height() / 2.0);
    const QPointF left(-25, 0);
    const QPointF up(0, -16);
    Comparison comparison(canvas);
    for (const QPointF& way : {left, left, up, -left, -left, -up}) {
        const QPointF start = middle - way * (movesPerStroke / 2.0);
        canvas.moveMouse(QEvent::MouseButtonPress, start);
        for (int move = 1; move <= movesPerStroke; ++move) {
            comparison.draw([&] { canvas.moveMouse(QEvent::MouseMove, start + way * move); });
        }
        canvas.moveMouse(QEvent::MouseButtonRelease, start + way * movesPerStroke);
    }
    comparison.report("pan");
}

/// Turns the wheel over the whole range of the zoom: out, in, and back to where it was.
void measureZoom(Canvas& canvas) {
    constexpr int angle = 50; // 300 frames in all
    const QPointF position(0.4 * viewSize.width(), 0.6 * viewSize.height());
    const double scaleAtStart = canvas.zoomScale();
    Comparison comparison(canvas);
    const auto turnUntil = [&](int turn, const auto& isThere) {
        while (!isThere()) {
            comparison.draw([&] { canvas.turnWheel(position, turn); });
        }
    };
    turnUntil(-angle, [&] { return canvas.zoomScale() <= CanvasGeometry::minScale; });
    turnUntil(angle, [&] { return canvas.zoomScale() >= CanvasGeometry::maxScale; });
    turnUntil(-angle, [&] { return canvas.zoomScale() <= scaleAtStart; });
    comparison.report("zoom");
}

void measureFrames(const Photo& photo) {
    Canvas canvas;
    canvas.walkTo(photo);
    canvas.zoomToFullSize();
    canvas.waitForFullSize();
    measurePan(canvas);
    measureZoom(canvas);
}

void measureArrival(const Photo& photo, const Photo& next) {
    constexpr double wheelsRest = 400;
    Canvas canvas;
    canvas.walkTo(photo);
    canvas.zoomToFullSize();
    double arrival = 0;
    const auto times = canvas.stage().drawUntil([&] {
        if (arrival == 0 && canvas.isFullSize()) {
            arrival = canvas.sinceWheel();
        }
        return arrival != 0;
    });
    const QSize size = canvas.fullSizePixels().size();
    std::printf("full decode of %d x %d pixels: on the screen %.0f ms after its request\n", size.width(),
        size.height(), arrival - wheelsRest);
    print("frame to frame while it is made and arrives", times);
    QElapsedTimer leaving;
    leaving.start();
    canvas.walkTo(next);
    std::printf("frame that leaves it: %.2f ms\n", milliseconds(leaving));
}

/// Looks closely at the photo again and again. All is counted from before the first time, so that what is not given
/// back shows.
void measureMemory(const Photo& photo, const Photo& next) {
    constexpr int visits = 10;
    Canvas canvas;
    double before = 0;
    for (int visit = 1; visit <= visits; ++visit) {
        canvas.walkTo(next);
        canvas.walkTo(photo);
        canvas.zoomToFullSize();
        before = visit == 1 ? residentMemory() : before;
        forgetPeakMemory();
        canvas.waitForFullSize();
        const double after = residentMemory();
        const double peak = peakMemory();
        const double pixels = pixelMemory(canvas.fullSizePixels());
        canvas.walkTo(next);
        const double left = residentMemory();
        if (visit == 1) {
            std::printf("memory before the first full decode: %.1f MiB; its pixels at 4 bytes: %.1f MiB\n",
                before, pixels);
        }
        if (visit <= 2 || visit == visits) {
            std::printf("memory added by full decode no. %d, times its pixels: %.3f; %.3f at the peak; "
                        "%.3f one frame after walking on\n",
                visit, (after - before) / pixels, (peak - before) / pixels, (left - before) / pixels);
        }
    }
}

/// A picture of its own, as a decode would be.
Photo decodedAnew(const Photo& photo, QSize size) {
    return {photo.url, Image(photo.image.pixels().scaled(size, Qt::IgnoreAspectRatio).copy())};
}

void measureWalk(const std::array<Photo, 2>& photos) {
    constexpr int steps = 2000;
    constexpr int stepsToFullSize = 100;
    Canvas canvas;
    for (int step = 1; step <= steps; ++step) {
        const Photo& photo = photos[static_cast<std::size_t>(step % 2)];
        const int shrink = step / 2 % 3; // not all of one size
        canvas.walkTo(decodedAnew(photo, photo.image.pixels().size() - QSize(90, 60) * shrink));
        if (step % stepsToFullSize == 0) {
            canvas.walkTo(photos.front());
            canvas.zoomToFullSize();
            canvas.waitForFullSize();
            canvas.walkTo(photos.back());
        }
        if (step == 200 || step == 1000 || step == steps) {
            std::printf("memory after %4d steps: %.1f MiB\n", step, residentMemory());
        }
    }
}

void measureHalving() {
    constexpr int runs = 5;
    QImage picture(6000, 4000, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    const auto least = [&](auto halve) {
        std::vector<double> times;
        for (int run = 0; run < runs; ++run) {
            QElapsedTimer timer;
            timer.start();
            const QImage half = halve();
            times.push_back(milliseconds(timer));
        }
        return percentile(times, 0);
    };
    const double ours = least([&] { return Platform::halved(picture); });
    const double theirs = least([&] {
        return picture.scaled(
            picture.width() / 2, picture.height() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    });
    std::printf("halving 6000 x 4000 pixels: %.1f ms, QImage::scaled %.1f ms, ratio %.2f\n", ours, theirs,
        ours / theirs);
}

Photo opened(const char* path) {
    const FileURL url{path};
    const auto image = Platform::decodeImage(url, handedInSide);
    if (!image) {
        fail(qUtf8Printable(image.error().localizedDescription()));
    }
    return {url, *image};
}

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // Qt takes the user's, with its decimal point
    if (argc != 3) {
        std::fprintf(stderr, "usage: canvas-benchmark PHOTO24MP PHOTO100MP\n");
        return 2;
    }
    const std::array<Photo, 2> photos{opened(argv[1]), opened(argv[2])};
    const auto& [photo, largePhoto] = photos;
    measureMemory(photo, largePhoto); // first, while the process holds nothing else
    measureFrames(photo);
    measureArrival(largePhoto, photo);
    measureWalk(photos);
    measureHalving();
    return 0;
}
