// SPDX-License-Identifier: MIT
// The costs of drawing that users would feel: a main window's background, and the shadow of a window.
#include <VXKit/app/LTWindow.h>
#include <VXKit/platform/desktop/WindowShadow.h>

#include <QApplication>
#include <QImage>

#include <benchmark/benchmark.h>

namespace {

void updateBackgroundOfMainWindow(benchmark::State& state) {
    LTWindow window(NSMakeRect(0, 0, 400, 500), 0, NSBackingStoreBuffered, false);
    for ([[maybe_unused]] auto iteration : state) {
        window.updateBackground();
    }
}
BENCHMARK(updateBackgroundOfMainWindow)->Unit(benchmark::kMillisecond);

/// A body of 300 x 260 with its margins of 216 is a picture of 732 x 692.
void shadowOfWindow(benchmark::State& state) {
    QImage look(300, 260, QImage::Format_ARGB32_Premultiplied);
    look.fill(Qt::black);
    const WindowShadow shadow{.standardDeviation = 72, .density = 0.75, .offsetX = 0, .offsetY = 28};
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(windowShadowImage(look.size(), look, shadow, 1));
    }
}
BENCHMARK(shadowOfWindow)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
