#include "Tools/Samples/Portfolio.h"

#include "Tools/Samples/Dunes.h"
#include "Tools/Samples/Mountains.h"
#include "Tools/Samples/Night.h"
#include "Tools/Samples/Ridges.h"
#include "Tools/Samples/Sea.h"

namespace {

using ScenePointer = std::unique_ptr<Scene>;

constexpr Colour black{0, 0, 0};

SkyLook clearDay() {
    SkyLook sky{
        .zenith = {0.06F, 0.17F, 0.45F}, .horizon = {0.50F, 0.64F, 0.80F}, .glow = {0.25F, 0.22F, 0.16F}};
    sky.sunAzimuth = -1.1F;
    sky.sunElevation = 0.6F;
    sky.cover = 0.42F;
    sky.cloudScale = 1.3F;
    sky.cloudLit = {1.15F, 1.12F, 1.08F};
    sky.cloudShade = {0.50F, 0.56F, 0.66F};
    return sky;
}

SkyLook sunrise() {
    SkyLook sky{
        .zenith = {0.13F, 0.22F, 0.42F}, .horizon = {0.52F, 0.46F, 0.48F}, .glow = {1.05F, 0.48F, 0.17F}};
    sky.sunAzimuth = 0.42F;
    sky.sunElevation = 0.07F;
    sky.cover = 0.46F;
    sky.cloudStretch = 1.6F;
    sky.cloudLit = {1.10F, 0.66F, 0.44F};
    sky.cloudShade = {0.30F, 0.27F, 0.34F};
    return sky;
}

SkyLook sunset() {
    SkyLook sky{
        .zenith = {0.09F, 0.11F, 0.27F}, .horizon = {0.42F, 0.26F, 0.28F}, .glow = {1.65F, 0.52F, 0.09F}};
    sky.sun = {26, 12, 3.5F};
    sky.sunAzimuth = -0.12F;
    sky.sunElevation = 0.035F;
    sky.cover = 0.62F;
    sky.cloudScale = 1.2F;
    sky.cloudStretch = 2.2F;
    sky.cloudLit = {1.15F, 0.42F, 0.20F};
    sky.cloudShade = {0.17F, 0.11F, 0.17F};
    return sky;
}

SkyLook pastelDawn() {
    SkyLook sky{
        .zenith = {0.13F, 0.24F, 0.46F}, .horizon = {0.62F, 0.42F, 0.46F}, .glow = {0.80F, 0.40F, 0.20F}};
    sky.sunAzimuth = 0.25F;
    sky.sunElevation = 0.03F;
    sky.cover = 0.36F;
    sky.cloudStretch = 2.6F;
    sky.cloudLit = {0.95F, 0.66F, 0.64F};
    sky.cloudShade = {0.50F, 0.45F, 0.58F};
    return sky;
}

SkyLook blueHour() {
    SkyLook sky{
        .zenith = {0.030F, 0.070F, 0.19F}, .horizon = {0.26F, 0.34F, 0.46F}, .glow = {0.50F, 0.26F, 0.16F}};
    sky.sunAzimuth = -0.3F;
    sky.sunElevation = 0.0F;
    sky.cover = 0.30F;
    sky.cloudStretch = 2.0F;
    sky.cloudLit = {0.27F, 0.28F, 0.38F};
    sky.cloudShade = {0.07F, 0.10F, 0.19F};
    return sky;
}

SkyLook overcast() {
    SkyLook sky{
        .zenith = {0.38F, 0.42F, 0.46F}, .horizon = {0.66F, 0.69F, 0.70F}, .glow = {0.10F, 0.09F, 0.07F}};
    sky.sunAzimuth = 0.3F;
    sky.sunElevation = 0.4F;
    sky.cover = 0.85F;
    sky.cloudLit = {0.74F, 0.75F, 0.76F};
    sky.cloudShade = {0.34F, 0.36F, 0.40F};
    return sky;
}

ScenePointer mirrorLakeAtSunrise(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = sunrise(), .view = {1.55F, 0.40F, 0.030F}};
    look.sky.sunAzimuth = -0.75F;
    look.sky.glow = {0.85F, 0.42F, 0.18F};
    look.haze = 0.020F;
    look.sunlight = {4.8F, 2.7F, 1.25F};
    look.skylight = {0.24F, 0.30F, 0.44F};
    look.grass = {0.13F, 0.12F, 0.05F};
    look.sunHeight = 0.42F;
    look.snowLine = 0.75F;
    look.mist = 0.16F;
    look.mistHeight = 0.05F;
    look.firstSlope = 3.0F;
    look.relief = 2.1F;
    look.hasLake = true;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer snowyPeaksByDay(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = clearDay(), .view = {1.9F, 0.36F, 0.55F}};
    look.sunlight = {3.0F, 2.8F, 2.5F};
    look.skylight = {0.26F, 0.36F, 0.55F};
    look.sunHeight = 0.55F;
    look.snowLine = 0.35F;
    look.treeLine = 0.25F;
    look.relief = 2.4F;
    look.firstSlope = 3.0F;
    look.haze = 0.028F;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer greenValley(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = sunrise(), .view = {1.5F, 0.55F, 0.42F}};
    look.sky.sunAzimuth = 0.85F;
    look.sky.cover = 0.3F;
    look.sunlight = {3.8F, 2.7F, 1.5F};
    look.skylight = {0.24F, 0.30F, 0.38F};
    look.grass = {0.15F, 0.165F, 0.045F};
    look.sunHeight = 0.30F;
    look.snowLine = 2.2F;
    look.treeLine = 0.9F;
    look.relief = 1.5F;
    look.mist = 0.30F;
    look.mistHeight = 0.07F;
    look.firstSlope = 1.4F;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer winterLakeAtBlueHour(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = blueHour(), .view = {1.5F, 0.42F, 0.030F}};
    look.sunlight = {0.55F, 0.36F, 0.36F};
    look.skylight = {0.27F, 0.38F, 0.58F};
    look.haze = 0.016F;
    look.snowLine = 0.25F;
    look.treeLine = 0.4F;
    look.relief = 2.2F;
    look.firstSlope = 3.0F;
    look.mist = 0.10F;
    look.hasLake = true;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer autumnHills(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = clearDay(), .view = {1.7F, 0.56F, 0.40F}};
    look.sky.cover = 0.66F;
    look.sky.sunAzimuth = 1.2F;
    look.sunlight = {3.0F, 2.4F, 1.7F};
    look.skylight = {0.25F, 0.30F, 0.40F};
    look.grass = {0.26F, 0.135F, 0.035F};
    look.forest = {0.085F, 0.032F, 0.010F};
    look.sunHeight = 0.40F;
    look.snowLine = 1.15F;
    look.treeLine = 0.85F;
    look.relief = 1.7F;
    look.firstSlope = 1.6F;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer moor(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = overcast(), .view = {1.6F, 0.52F, 0.30F}};
    look.sunlight = {1.5F, 1.35F, 1.1F};
    look.skylight = {0.52F, 0.56F, 0.60F};
    look.grass = {0.17F, 0.115F, 0.045F};
    look.rock = {0.16F, 0.15F, 0.15F};
    look.forest = {0.075F, 0.040F, 0.035F};
    look.sunHeight = 0.45F;
    look.snowLine = 3;
    look.treeLine = 0.5F;
    look.relief = 1.35F;
    look.firstSlope = 1.8F;
    look.haze = 0.06F;
    look.mist = 0.05F;
    look.mistHeight = 0.5F;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer alpenglow(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = blueHour(), .view = {2.1F, 0.34F, 0.45F}};
    look.sky.horizon = {0.42F, 0.34F, 0.46F};
    look.sky.zenith = {0.09F, 0.15F, 0.34F};
    look.sky.sunAzimuth = -1.5F;
    look.sky.glow = {0.35F, 0.16F, 0.12F};
    look.sunlight = {3.4F, 1.15F, 0.50F};
    look.skylight = {0.16F, 0.20F, 0.36F};
    look.sunHeight = 0.16F;
    look.snowLine = 0.7F;
    look.treeLine = 0.4F;
    look.relief = 2.6F;
    look.firstSlope = 3.4F;
    look.mist = 0.2F;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer summerLake(const Frame& frame, std::uint32_t seed) {
    MountainLook look{.sky = clearDay(), .view = {1.2F, 0.44F, 0.030F}};
    look.sunlight = {3.0F, 2.75F, 2.3F};
    look.skylight = {0.25F, 0.34F, 0.48F};
    look.grass = {0.10F, 0.115F, 0.030F};
    look.sunHeight = 0.7F;
    look.snowLine = 1.0F;
    look.treeLine = 0.75F;
    look.relief = 2.3F;
    look.firstSlope = 2.4F;
    look.ripples = 0.007F;
    look.hasLake = true;
    return std::make_unique<Mountains>(look, frame, seed);
}

ScenePointer goldenDunes(const Frame& frame, std::uint32_t seed) {
    DuneLook look{.sky = sunrise()};
    look.sky.zenith = {0.20F, 0.30F, 0.50F};
    look.sky.sunAzimuth = -1.15F;
    look.sky.cover = 0.12F;
    return std::make_unique<Dunes>(look, frame, seed);
}

ScenePointer dunesAtDusk(const Frame& frame, std::uint32_t seed) {
    DuneLook look{.sky = pastelDawn()};
    look.sky.zenith = {0.16F, 0.18F, 0.38F};
    look.sky.sunAzimuth = 1.2F;
    look.sky.cover = 0;
    look.sand = {0.50F, 0.30F, 0.22F};
    look.sunlight = {2.1F, 1.05F, 0.75F};
    look.skylight = {0.20F, 0.20F, 0.36F};
    look.sunHeight = 0.16F;
    return std::make_unique<Dunes>(look, frame, seed);
}

ScenePointer whiteSands(const Frame& frame, std::uint32_t seed) {
    DuneLook look{.sky = clearDay()};
    look.sky.sunAzimuth = -1.3F;
    look.sky.cover = 0.5F;
    look.view = {1.6F, 0.60F, 0.05F};
    look.sand = {0.78F, 0.76F, 0.72F};
    look.sunlight = {1.6F, 1.45F, 1.2F};
    look.skylight = {0.24F, 0.32F, 0.46F};
    look.sunHeight = 0.30F;
    return std::make_unique<Dunes>(look, frame, seed);
}

ScenePointer ridgesAtDawn(const Frame& frame, std::uint32_t seed) {
    RidgeLook look{.sky = sunrise()};
    look.sky.sun = {22, 12, 5};
    look.sky.sunAzimuth = 0.14F;
    look.sky.sunElevation = 0.20F;
    look.sky.cover = 0.2F;
    look.near = {0.020F, 0.014F, 0.014F};
    look.sky.zenith = {0.16F, 0.20F, 0.32F};
    look.sky.glow = {1.5F, 0.62F, 0.18F};
    look.far = {0.52F, 0.27F, 0.16F};
    look.mist = {0.78F, 0.40F, 0.19F};
    look.count = 8;
    return std::make_unique<Ridges>(look, frame, seed);
}

ScenePointer blueRidges(const Frame& frame, std::uint32_t seed) {
    RidgeLook look{.sky = blueHour()};
    look.sky.zenith = {0.16F, 0.26F, 0.46F};
    look.sky.horizon = {0.62F, 0.70F, 0.78F};
    look.sky.glow = {0.22F, 0.17F, 0.12F};
    look.sky.cover = 0;
    look.near = {0.006F, 0.014F, 0.028F};
    look.far = {0.34F, 0.46F, 0.62F};
    look.mist = {0.50F, 0.62F, 0.76F};
    look.count = 9;
    look.steepness = 1.25F;
    look.trees = 0.035F;
    look.mistDepth = 0.2F;
    return std::make_unique<Ridges>(look, frame, seed);
}

ScenePointer roseRidges(const Frame& frame, std::uint32_t seed) {
    RidgeLook look{.sky = pastelDawn()};
    look.sky.zenith = {0.34F, 0.30F, 0.52F};
    look.sky.horizon = {0.88F, 0.58F, 0.62F};
    look.near = {0.030F, 0.014F, 0.034F};
    look.far = {0.56F, 0.38F, 0.50F};
    look.mist = {0.84F, 0.58F, 0.62F};
    look.count = 6;
    look.top = 0.5F;
    look.steepness = 1.2F;
    look.trees = 0.09F;
    return std::make_unique<Ridges>(look, frame, seed);
}

ScenePointer forestInFog(const Frame& frame, std::uint32_t seed) {
    RidgeLook look{.sky = overcast()};
    look.sky.zenith = {0.26F, 0.34F, 0.36F};
    look.sky.horizon = {0.70F, 0.76F, 0.75F};
    look.sky.cover = 0;
    look.near = {0.010F, 0.022F, 0.018F};
    look.far = {0.60F, 0.68F, 0.68F};
    look.mist = {0.66F, 0.74F, 0.73F};
    look.count = 6;
    look.wooded = 6;
    look.trees = 0.86F;
    look.shrinking = 0.74F;
    look.top = 0.58F;
    look.bottom = -0.06F;
    look.steepness = 0.5F;
    look.mistDepth = 0.35F;
    return std::make_unique<Ridges>(look, frame, seed);
}

ScenePointer amberForest(const Frame& frame, std::uint32_t seed) {
    RidgeLook look{.sky = sunrise()};
    look.sky.zenith = {0.30F, 0.17F, 0.09F};
    look.sky.horizon = {0.62F, 0.34F, 0.14F};
    look.sky.glow = {1.3F, 0.62F, 0.18F};
    look.sky.sun = {24, 15, 7};
    look.sky.sunAzimuth = -0.12F;
    look.sky.sunElevation = 0.24F;
    look.sky.cover = 0;
    look.near = {0.020F, 0.012F, 0.006F};
    look.far = {0.58F, 0.30F, 0.11F};
    look.mist = {0.80F, 0.44F, 0.16F};
    look.count = 6;
    look.wooded = 6;
    look.trees = 0.80F;
    look.shrinking = 0.72F;
    look.top = 0.46F;
    look.bottom = -0.04F;
    look.steepness = 0.6F;
    look.mistDepth = 0.4F;
    return std::make_unique<Ridges>(look, frame, seed);
}

ScenePointer calmSeaAtDawn(const Frame&, std::uint32_t seed) {
    SeaLook look{.sky = pastelDawn()};
    look.sky.cover = 0.55F;
    look.sky.sun = {14, 8, 4.5F};
    look.sky.sunElevation = 0.06F;
    look.glitter = {1.6F, 1.0F, 0.6F};
    look.waves = 0.045F;
    return std::make_unique<Sea>(look, seed);
}

ScenePointer seaAtSunset(const Frame&, std::uint32_t seed) {
    SeaLook look{.sky = sunset()};
    look.view.horizon = 0.34F;
    look.glitter = {3.4F, 1.4F, 0.35F};
    return std::make_unique<Sea>(look, seed);
}

ScenePointer stormySea(const Frame&, std::uint32_t seed) {
    SeaLook look{.sky = overcast()};
    look.sky.zenith = {0.10F, 0.13F, 0.16F};
    look.sky.horizon = {0.40F, 0.45F, 0.46F};
    look.sky.cloudLit = {0.42F, 0.46F, 0.48F};
    look.sky.cloudShade = {0.045F, 0.060F, 0.075F};
    look.sky.cloudScale = 0.8F;
    look.water = {0.006F, 0.022F, 0.026F};
    look.glitter = {0.05F, 0.06F, 0.06F};
    look.view.horizon = 0.36F;
    look.waves = 0.17F;
    return std::make_unique<Sea>(look, seed);
}

ScenePointer tropicalSea(const Frame&, std::uint32_t seed) {
    SeaLook look{.sky = clearDay()};
    look.sky.sunAzimuth = 0.5F;
    look.sky.cover = 0.5F;
    look.water = {0.010F, 0.21F, 0.24F};
    look.glitter = {0.9F, 0.9F, 0.85F};
    look.view.horizon = 0.52F;
    look.waves = 0.075F;
    return std::make_unique<Sea>(look, seed);
}

ScenePointer milkyWay(const Frame& frame, std::uint32_t seed) {
    return std::make_unique<Night>(NightLook{}, frame, seed);
}

ScenePointer starsAtDusk(const Frame& frame, std::uint32_t seed) {
    NightLook look;
    look.zenith = {0.008F, 0.022F, 0.075F};
    look.horizon = {0.10F, 0.20F, 0.30F};
    look.afterglow = {0.75F, 0.34F, 0.12F};
    look.afterglowAzimuth = 0.1F;
    look.milkyWay = black;
    look.starDensity = 0.8F;
    look.skyline = 0.24F;
    return std::make_unique<Night>(look, frame, seed);
}

ScenePointer aurora(const Frame& frame, std::uint32_t seed) {
    NightLook look;
    look.aurora = {0.07F, 0.50F, 0.20F};
    look.milkyWay = black;
    look.horizon = {0.02F, 0.05F, 0.07F};
    look.afterglow = black;
    look.starDensity = 0.8F;
    return std::make_unique<Night>(look, frame, seed);
}

constexpr Orientation upright = Orientation::Upright;

constexpr Motif motifs[] = {
    {false, upright, mirrorLakeAtSunrise, 8},
    {true, upright, forestInFog, 3},
    {false, upright, goldenDunes, 3},
    {false, upright, milkyWay, 9},
    {false, upright, ridgesAtDawn, 4},
    {false, upright, calmSeaAtDawn, 2},
    {false, upright, snowyPeaksByDay, 12},
    {true, Orientation::TurnRight, aurora, 6},
    {false, upright, greenValley, 6},
    {false, upright, dunesAtDusk, 6},
    {false, upright, seaAtSunset, 5},
    {true, Orientation::TurnLeft, amberForest, 12},
    {false, upright, winterLakeAtBlueHour, 1},
    {false, upright, autumnHills, 7},
    {false, upright, blueRidges, 8},
    {true, Orientation::TurnRight, summerLake, 14},
    {false, upright, stormySea, 4},
    {false, upright, roseRidges, 15},
    {false, upright, whiteSands, 10},
    {true, upright, starsAtDusk, 2},
    {false, upright, moor, 5},
    {false, upright, tropicalSea, 6},
    {false, upright, alpenglow, 23},
    {true, Orientation::TurnLeft, snowyPeaksByDay, 3},
};

} // namespace

const Motif& motif(int index) {
    return motifs[index % motifCount()];
}

int motifCount() {
    return static_cast<int>(std::size(motifs));
}
