#include "Vantrel/PhotoTiling.h"

#include <QLineF>
#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>
#include <tuple>
#include <vector>

namespace {

constexpr unsigned placements = 20000;
constexpr int tileSide = PhotoTiling::largestTextureSide - 4;

/// As many levels as a picture of that size has.
int levelCount(QSize pixels) {
    int count = 1;
    for (int side = std::max(pixels.width(), pixels.height()); side > 256; side = (side + 1) / 2) {
        ++count;
    }
    return count;
}

QSize levelSize(QSize pixels, int level) {
    const int unit = 1 << level;
    return {(pixels.width() + unit - 1) / unit, (pixels.height() + unit - 1) / unit};
}

int columns(QSize pixels, int level) {
    return (levelSize(pixels, level).width() + tileSide - 1) / tileSide;
}

int rows(QSize pixels, int level) {
    return (levelSize(pixels, level).height() + tileSide - 1) / tileSide;
}

/// A picture in a view.
struct Placement {
    QSize pixels;
    QRectF rect;
    QSizeF view;
    double devicePixelRatio = 1;

    /// Of so many points for each of the picture's pixels.
    static Placement of(QSize pixels, double scale, QPointF topLeft, QSizeF view, double devicePixelRatio) {
        return {pixels, QRectF(topLeft, QSizeF(pixels) * scale), view, devicePixelRatio};
    }

    PhotoTiling tiling() const { return {pixels, levelCount(pixels), rect, view, devicePixelRatio}; }

    /// The levels that are drawn, and all their tiles.
    std::vector<int> levels() const {
        const PhotoTiling tiled = tiling();
        return tiled.finerShare() < 1 ? std::vector{tiled.finerLevel(), tiled.finerLevel() + 1}
                                      : std::vector{tiled.finerLevel()};
    }

    std::vector<TileID> tiles(int level) const {
        std::vector<TileID> all;
        for (int row = 0; row < rows(pixels, level); ++row) {
            for (int column = 0; column < columns(pixels, level); ++column) {
                all.push_back({level, column, row});
            }
        }
        return all;
    }

    bool isSeen(const TileID& tile) const {
        return tiling().place(tile).target.intersects(QRectF(QPointF(), view));
    }

    QString description() const {
        return QStringLiteral("%1 x %2 pixels at (%3, %4), %5 x %6 points, in %7 x %8 points of %9 pixels")
            .arg(pixels.width())
            .arg(pixels.height())
            .arg(rect.x(), 0, 'g', 17)
            .arg(rect.y(), 0, 'g', 17)
            .arg(rect.width(), 0, 'g', 17)
            .arg(rect.height(), 0, 'g', 17)
            .arg(view.width(), 0, 'g', 17)
            .arg(view.height(), 0, 'g', 17)
            .arg(devicePixelRatio);
    }
};

/// One axis of a placement: where the picture's first pixel begins and how long each is, in device pixels.
struct Axis {
    double origin;
    double scale;
    int pixels;

    double end() const { return origin + scale * pixels; }
    double picturePixelAt(double devicePixel) const { return (devicePixel - origin) / scale; }
};

/// How the picture is to lie on the screen.
struct Mapping {
    Axis across;
    Axis down;

    static Mapping of(const Placement& placement) {
        const double ratio = placement.devicePixelRatio;
        const QRectF& rect = placement.rect;
        const QSize pixels = placement.pixels;
        Mapping mapping{{rect.x() * ratio, rect.width() / pixels.width() * ratio, pixels.width()},
            {rect.y() * ratio, rect.height() / pixels.height() * ratio, pixels.height()}};
        const double longerSidesScale =
            pixels.width() >= pixels.height() ? mapping.across.scale : mapping.down.scale;
        const double depth = std::clamp(-std::log2(longerSidesScale), 0.0, levelCount(pixels) - 1.0);
        const double whole = std::exp2(-std::round(depth));
        if (drifts(mapping.across, whole) || drifts(mapping.down, whole)) {
            return mapping;
        }
        for (Axis* axis : {&mapping.across, &mapping.down}) { // pixel for pixel
            axis->scale = whole;
            axis->origin = std::round(axis->origin);
        }
        return mapping;
    }

private:
    static bool drifts(const Axis& axis, double scale) {
        return std::abs(axis.scale - scale) * axis.pixels >= 0.25;
    }
};

/// One axis of a tile, in device pixels of the view and in pixels of the level and of the texture.
struct TileSpan {
    double start;
    double end;
    double sourceStart;
    double sourceEnd;
    int textureStart;
    int textureEnd;
};

TileSpan spanAcross(const Placement& placement, const PhotoTiling& tiling, const TileID& tile) {
    const PhotoTiling::Place place = tiling.place(tile);
    const QRect texture = tiling.texturePixels(tile);
    return {place.target.left() * placement.devicePixelRatio,
        place.target.right() * placement.devicePixelRatio, place.source.left() + texture.left(),
        place.source.right() + texture.left(), texture.left(), texture.left() + texture.width()};
}

TileSpan spanDown(const Placement& placement, const PhotoTiling& tiling, const TileID& tile) {
    const PhotoTiling::Place place = tiling.place(tile);
    const QRect texture = tiling.texturePixels(tile);
    return {place.target.top() * placement.devicePixelRatio,
        place.target.bottom() * placement.devicePixelRatio, place.source.top() + texture.top(),
        place.source.bottom() + texture.top(), texture.top(), texture.top() + texture.height()};
}

/// Whether the last tile ends with the picture. One too thin for a device pixel gives way to its neighbour, whose edge
/// is rounded: then the same device pixels are covered.
bool endsWithPicture(const TileSpan& last, const Axis& axis, double tolerance) {
    const auto pixelsCovered = [](double end) { return std::ceil(end - 0.5); };
    if (last.start == last.end) {
        return pixelsCovered(last.end) == pixelsCovered(axis.end());
    }
    return std::abs(last.end - axis.end()) <= tolerance;
}

/// What is wrong with where one axis of the tiles goes, or nothing.
QString problemOfEdges(const std::vector<TileSpan>& spans, const Axis& axis, double devicePixelRatio) {
    const double exact = 1e-9 * devicePixelRatio;
    if (std::abs(spans.front().start - axis.origin) > exact || !endsWithPicture(spans.back(), axis, exact)) {
        return QStringLiteral("the outer edges are not the picture's");
    }
    for (std::size_t i = 0; i + 1 < spans.size(); ++i) {
        const double edge = spans[i].end;
        if (std::abs(edge - spans[i + 1].start) > exact) {
            return QStringLiteral("a gap or an overlap between tiles %1 and %2").arg(i).arg(i + 1);
        }
        if (std::abs(edge - std::round(edge)) > 1e-6) {
            return QStringLiteral("tiles %1 and %2 meet within a device pixel").arg(i).arg(i + 1);
        }
    }
    return {};
}

/// What is wrong with what one axis of the tiles shows, or nothing.
QString problemOfSource(const TileSpan& span, const Axis& axis, int level, int levelPixels) {
    const double unit = std::exp2(level);
    const double slips[] = {span.sourceStart * unit - axis.picturePixelAt(span.start),
        span.sourceEnd * unit - axis.picturePixelAt(span.end)};
    if (std::abs(slips[0]) > 1e-6 || std::abs(slips[1]) > 1e-6) {
        return QStringLiteral("shows another place of the picture, off by %1 and %2")
            .arg(slips[0])
            .arg(slips[1]);
    }
    if (span.end < span.start || span.sourceEnd < span.sourceStart) {
        return QStringLiteral("shown mirrored");
    }
    constexpr double rounding = 1e-6;
    if (span.textureStart > std::max(span.sourceStart - 1, 0.0) + rounding ||
        span.textureEnd < std::min<double>(span.sourceEnd + 1, levelPixels) - rounding) {
        return QStringLiteral("less than a pixel of its neighbours in its texture");
    }
    const int length = span.textureEnd - span.textureStart;
    if (length < 1 || length > PhotoTiling::largestTextureSide || span.textureStart < 0 ||
        span.textureEnd > levelPixels) {
        return QStringLiteral("texture from %1 to %2").arg(span.textureStart).arg(span.textureEnd);
    }
    return {};
}

QString problemOfAxis(const std::vector<TileSpan>& spans, const Axis& axis, int level, int levelPixels,
    double devicePixelRatio) {
    for (const TileSpan& span : spans) {
        QString problem = problemOfSource(span, axis, level, levelPixels);
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return problemOfEdges(spans, axis, devicePixelRatio);
}

/// Tiles lie in a grid: what holds for one row and one column holds for all.
QString problemOfGrid(const Placement& placement, int level) {
    const PhotoTiling tiling = placement.tiling();
    const Mapping mapping = Mapping::of(placement);
    const QSize size = levelSize(placement.pixels, level);
    std::vector<TileSpan> across;
    across.reserve(columns(placement.pixels, level));
    for (int column = 0; column < columns(placement.pixels, level); ++column) {
        across.push_back(spanAcross(placement, tiling, {level, column, 0}));
    }
    std::vector<TileSpan> down;
    down.reserve(rows(placement.pixels, level));
    for (int row = 0; row < rows(placement.pixels, level); ++row) {
        down.push_back(spanDown(placement, tiling, {level, 0, row}));
    }
    for (const TileID& tile : placement.tiles(level)) {
        const QRectF target = tiling.place(tile).target;
        const QRectF ofFirst(tiling.place({level, tile.column, 0}).target.x(),
            tiling.place({level, 0, tile.row}).target.y(),
            tiling.place({level, tile.column, 0}).target.width(),
            tiling.place({level, 0, tile.row}).target.height());
        if (target != ofFirst) {
            return QStringLiteral("not a grid");
        }
    }
    const QString problem =
        problemOfAxis(across, mapping.across, level, size.width(), placement.devicePixelRatio);
    return problem.isEmpty()
               ? problemOfAxis(down, mapping.down, level, size.height(), placement.devicePixelRatio)
               : problem;
}

/// What is wrong with the choice and the order of tiles, or nothing.
QString problemOfNeed(const Placement& placement) {
    const PhotoTiling tiling = placement.tiling();
    const std::vector<TileID> needed = tiling.neededTiles();
    const std::set<TileID> set(needed.begin(), needed.end());
    if (set.size() != needed.size()) {
        return QStringLiteral("a tile is needed twice");
    }
    std::set<TileID> drawn;
    for (const int level : placement.levels()) {
        for (const TileID& tile : placement.tiles(level)) {
            drawn.insert(tile);
            if (placement.isSeen(tile) && !(tiling.isVisible(tile) && set.contains(tile))) {
                return QStringLiteral("a tile in view is not needed");
            }
        }
    }
    const double across = 0.25 * placement.view.width() + 1;
    const double down = 0.25 * placement.view.height() + 1;
    const QRectF wide = QRectF(QPointF(), placement.view).adjusted(-across, -down, across, down);
    for (const TileID& tile : needed) {
        if (!drawn.contains(tile) || !tiling.place(tile).target.adjusted(-1, -1, 1, 1).intersects(wide)) {
            return QStringLiteral("a tile is needed without being near the view");
        }
    }
    return {};
}

/// First what is in view; of that the coarser level; of that what is in the middle.
QString problemOfOrder(const Placement& placement) {
    const PhotoTiling tiling = placement.tiling();
    const std::vector<TileID> needed = tiling.neededTiles();
    const QPointF middle = QRectF(QPointF(), placement.view).center();
    for (std::size_t i = 1; i < needed.size(); ++i) {
        const TileID& before = needed[i - 1];
        const TileID& after = needed[i];
        const auto group = [&](const TileID& tile) {
            return std::tuple(!tiling.isVisible(tile), -tile.level);
        };
        const auto distance = [&](const TileID& tile) {
            return QLineF(tiling.place(tile).target.center(), middle).length();
        };
        constexpr double rounding = 2; // the order knows the tiles before their edges go to whole pixels
        if (group(after) < group(before) ||
            (group(after) == group(before) && distance(after) < distance(before) - rounding)) {
            return QStringLiteral("tile %1 comes too late").arg(i);
        }
    }
    return {};
}

double texturePixelsInView(const Placement& placement) {
    const PhotoTiling tiling = placement.tiling();
    double pixels = 0;
    for (const TileID& tile : tiling.neededTiles()) {
        if (tiling.isVisible(tile)) {
            const QSize size = tiling.texturePixels(tile).size();
            pixels += static_cast<double>(size.width()) * size.height();
        }
    }
    return pixels;
}

/// The finer level has at most two pixels for each device pixel's length and the coarser one has one; at each end
/// there may be a tile of which next to nothing is seen.
double mostTexturePixels(const Placement& placement) {
    const QSizeF device = placement.view * placement.devicePixelRatio + QSizeF(2, 2);
    constexpr double ends = 2 * PhotoTiling::largestTextureSide;
    constexpr double withNeighbours = PhotoTiling::largestTextureSide / static_cast<double>(tileSide);
    const auto most = [&](double density) {
        return (density * device.width() * withNeighbours + ends) *
               (density * device.height() * withNeighbours + ends);
    };
    return most(2) + most(1);
}

QString problem(const Placement& placement) {
    const PhotoTiling tiling = placement.tiling();
    if (!(tiling.finerShare() > 0 && tiling.finerShare() <= 1) || tiling.finerLevel() < 0 ||
        placement.levels().back() >= levelCount(placement.pixels)) {
        return QStringLiteral("levels %1, share %2").arg(tiling.finerLevel()).arg(tiling.finerShare());
    }
    for (const int level : placement.levels()) {
        const QString ofGrid = problemOfGrid(placement, level);
        if (!ofGrid.isEmpty()) {
            return QStringLiteral("level %1: %2").arg(level).arg(ofGrid);
        }
    }
    QString ofNeed = problemOfNeed(placement);
    if (!ofNeed.isEmpty()) {
        return ofNeed;
    }
    if (texturePixelsInView(placement) > mostTexturePixels(placement)) {
        return QStringLiteral("%1 texture pixels in view").arg(texturePixelsInView(placement));
    }
    return problemOfOrder(placement);
}

/// Any picture at any zoom, mostly where some of it is in view.
Placement randomPlacement(std::mt19937& random) {
    const auto real = [&](double least, double greatest) {
        return std::uniform_real_distribution<double>(least, greatest)(random);
    };
    const auto any = [&](const auto& choices) {
        return choices[std::uniform_int_distribution<std::size_t>(0, std::size(choices) - 1)(random)];
    };
    constexpr QSize sizes[] = {{1, 1}, {1, 30000}, {30000, 2000}, {6000, 4000}, {1200, 801}};
    constexpr double ratios[] = {1, 1.25, 1.5, 2};
    const QSize pixels = any(sizes);
    const double scale = 0.02 * std::pow(25 / 0.02, real(0, 1));
    const QSizeF view(real(16, 2600), real(16, 1600));
    const QPointF inPicture(real(0, pixels.width()), real(0, pixels.height()));
    const QPointF inView(real(-0.2, 1.2) * view.width(), real(-0.2, 1.2) * view.height());
    Placement placement = Placement::of(pixels, scale, inView - inPicture * scale, view, any(ratios));
    if (any(std::array{
            false, true})) { // a larger decode in the place of a smaller one, whose sides were rounded
        placement.rect.setHeight(placement.rect.height() * (1 + real(-0.5, 0.5) / 1200));
    }
    return placement;
}

} // namespace

class PhotoTilingTest : public QObject {
    Q_OBJECT

private slots:
    void whereverAPictureIsItsTilesShowAllOfIt() {
        for (unsigned seed = 1; seed <= placements; ++seed) {
            std::mt19937 random(seed);
            const Placement placement = randomPlacement(random);
            const QString found = problem(placement);
            QVERIFY2(found.isEmpty(),
                qPrintable(QStringLiteral("seed %1: %2; %3").arg(seed).arg(found, placement.description())));
        }
    }

    void aPictureWhoseLastTileIsASliverEndsWhereItEnds_data() {
        QTest::addColumn<QSize>("pixels");
        for (const QSize pixels :
            {QSize(1021, 700), QSize(2041, 1021), QSize(700, 4081), QSize(4082, 2042)}) {
            QTest::addRow("%d x %d", pixels.width(), pixels.height()) << pixels;
        }
    }

    void aPictureWhoseLastTileIsASliverEndsWhereItEnds() {
        QFETCH(QSize, pixels);
        for (int step = 0; step < 400; ++step) {
            const double scale = 0.1 * std::pow(40, step / 400.0);
            const Placement placement = Placement::of(
                pixels, scale, {-0.37 * step, 0.61 * step}, {800, 600}, step % 2 == 0 ? 1 : 1.25);
            const QString found = problem(placement);
            QVERIFY2(found.isEmpty(), qPrintable(found + QLatin1String("; ") + placement.description()));
        }
    }

    void pixelForPixelNothingIsSmoothed_data() {
        QTest::addColumn<QSize>("pixels");
        QTest::addColumn<double>("devicePixelRatio");
        QTest::addColumn<QPointF>("offset"); // device pixels
        for (const QSize pixels :
            {QSize(1200, 801), QSize(6000, 4000), QSize(30000, 2000), QSize(1, 30000)}) {
            for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
                for (const QPointF offset :
                    {QPointF(0, 0), QPointF(-1000.5, -700.5), QPointF(10.5, 20.25), QPointF(-0.3, -1.7)}) {
                    QTest::addRow("%d x %d, %g, (%g, %g)", pixels.width(), pixels.height(), ratio, offset.x(),
                        offset.y())
                        << pixels << ratio << offset;
                }
            }
        }
    }

    void pixelForPixelNothingIsSmoothed() {
        QFETCH(QSize, pixels);
        QFETCH(double, devicePixelRatio);
        QFETCH(QPointF, offset);
        const Placement placement = Placement::of(
            pixels, 1 / devicePixelRatio, offset / devicePixelRatio, {1000, 700}, devicePixelRatio);
        const PhotoTiling tiling = placement.tiling();
        QCOMPARE(tiling.finerLevel(), 0);
        QCOMPARE(tiling.finerShare(), 1.0);
        QVERIFY(!tiling.isCrisp());
        const auto isWhole = [](double value) { return std::abs(value - std::round(value)) < 1e-6; };
        for (const TileID& tile : placement.tiles(0)) {
            const auto [target, source] = tiling.place(tile);
            for (const double edge : {source.left(), source.top(), source.right(), source.bottom()}) {
                QVERIFY(isWhole(edge));
            }
            for (const double edge : {target.left(), target.top(), target.right(), target.bottom()}) {
                QVERIFY(isWhole(edge * devicePixelRatio));
            }
        }
        const QPointF moved = tiling.place({0, 0, 0}).target.topLeft() * devicePixelRatio - offset;
        QVERIFY(std::abs(moved.x()) <= 0.5 + 1e-9 && std::abs(moved.y()) <= 0.5 + 1e-9);
        const QString found = problem(placement);
        QVERIFY2(found.isEmpty(), qPrintable(found));
    }

    void aHalfOfThePictureIsDrawnPixelForPixelToo() {
        const Placement placement = Placement::of({6000, 4000}, 0.5, {-200.5, 30.25}, {1000, 700}, 1);
        const PhotoTiling tiling = placement.tiling();
        QCOMPARE(tiling.finerLevel(), 1);
        QCOMPARE(tiling.finerShare(), 1.0);
        QCOMPARE(tiling.place({1, 0, 0}).target, QRectF(-201, 30, 1020, 1020));
        QCOMPARE(tiling.place({1, 0, 0}).source, QRectF(0, 0, 1020, 1020));
        QCOMPARE(tiling.place({1, 1, 0}).source, QRectF(2, 0, 1020, 1020));
    }

    void nearlyPixelForPixelIsSoTooButNotBeyondADriftOfAQuarter() {
        const auto tiling = [](double width) {
            return Placement{{6000, 4000}, QRectF(0.5, 0, width, width / 1.5), {1000, 700}, 1}.tiling();
        };
        QCOMPARE(tiling(6000.2).place({0, 0, 0}).target, QRectF(1, 0, 1020, 1020));
        QCOMPARE(tiling(5999.8).finerShare(), 1.0);
        QCOMPARE(tiling(6000.3).place({0, 0, 0}).target.left(), 0.5);
        QVERIFY(tiling(5999.7).finerShare() < 1);
    }

    void theFinerLevelFadesBetweenTwoLevels() {
        const auto tiling = [](double depth) {
            return Placement::of({6000, 4000}, std::exp2(-depth), {0, 0}, {1000, 700}, 1).tiling();
        };
        for (int level = 0; level < 4; ++level) {
            double last = 1;
            for (double part = 0.01; part < 0.995; part += 0.01) {
                const PhotoTiling between = tiling(level + part);
                QCOMPARE(between.finerLevel(), level);
                QVERIFY(std::abs(between.finerShare() - (1 - part)) < 1e-9);
                QVERIFY(between.finerShare() < last);
                last = between.finerShare();
            }
            QVERIFY(last < 0.02);
            QCOMPARE(tiling(level).finerLevel(), level);
            QCOMPARE(tiling(level).finerShare(), 1.0);
        }
    }

    void aPictureOutOfViewNeedsNoTiles_data() {
        QTest::addColumn<QPointF>("topLeft");
        QTest::addColumn<bool>("isNear");
        QTest::newRow("left, near") << QPointF(-1400, 0) << true;
        QTest::newRow("left") << QPointF(-1460, 0) << false;
        QTest::newRow("right, near") << QPointF(1240, 0) << true;
        QTest::newRow("right") << QPointF(1260, 0) << false;
        QTest::newRow("above, near") << QPointF(0, -980) << true;
        QTest::newRow("above") << QPointF(0, -1000) << false;
        QTest::newRow("below, near") << QPointF(0, 990) << true;
        QTest::newRow("below") << QPointF(0, 1010) << false;
        QTest::newRow("far") << QPointF(1e6, -1e6) << false;
    }

    void aPictureOutOfViewNeedsNoTiles() {
        QFETCH(QPointF, topLeft);
        QFETCH(bool, isNear);
        const Placement placement = Placement::of({1200, 800}, 0.99, topLeft, {1000, 800}, 1);
        const PhotoTiling tiling = placement.tiling();
        const std::vector<TileID> needed = tiling.neededTiles();
        QCOMPARE(!needed.empty(), isNear);
        for (const TileID& tile : needed) {
            QVERIFY(!tiling.isVisible(tile));
        }
    }

    void pixelsShowAsSuchFromFourToOneOn() {
        const auto isCrisp = [](double scale, double ratio) {
            return Placement::of({1200, 801}, scale, {0, 0}, {1000, 700}, ratio).tiling().isCrisp();
        };
        QVERIFY(isCrisp(4, 1));
        QVERIFY(isCrisp(25, 1));
        QVERIFY(!isCrisp(3.99, 1));
        QVERIFY(isCrisp(2, 2));
        QVERIFY(!isCrisp(1.99, 2));
        QVERIFY(!isCrisp(0.1, 1));
    }

    void theTexturesInViewStayWithinAFewTimesTheView() {
        constexpr QSize view(3840, 2160);
        constexpr double viewPixels = 3840.0 * 2160;
        double most = 0;
        for (int step = 0; step < 300; ++step) {
            const double scale = 0.03 * std::pow(10 / 0.03, step / 300.0);
            const QPointF topLeft = -0.4 * QPointF(30000 * scale, 20000 * scale);
            const Placement placement = Placement::of({30000, 20000}, scale, topLeft, view, 1);
            most = std::max(most, texturePixelsInView(placement) / viewPixels);
        }
        QVERIFY2(most > 1 && most <= 10, qPrintable(QString::number(most)));
    }
};

QTEST_APPLESS_MAIN(PhotoTilingTest)
#include "PhotoTilingTest.moc"
