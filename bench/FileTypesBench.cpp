// The cost of "File Format..." OK: reading and rewriting a large mimeapps.list, and one
// whole apply (take over two formats, then give them back) with its settings writes.
#include "browser/BrowserList.h"
#include "browser/BrowserSettings.h"
#include "browser/filetypes/FormatWordsApplier.h"
#include "browser/filetypes/MimeAppsList.h"
#include "imagelib/imagelib.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <string>

using namespace lanmira;

namespace {

std::string bigList(int entries) {
    std::string text = "# a long-used desktop\n[Default Applications]\n";
    for (int i = 0; i < entries; ++i)
        text +=
            "application/x-type-" + std::to_string(i) + "=app" + std::to_string(i) + ".desktop\n";
    text += "\n[Added Associations]\nimage/png=a.desktop;b.desktop;\n";
    return text;
}

void BM_MimeAppsList_SetAndWrite(benchmark::State& state) {
    const std::string text = bigList(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        MimeAppsList list = MimeAppsList::parse(text);
        list.setValue(MimeAppsList::kDefaultApplications, "image/png", "Lanmira.1.desktop");
        benchmark::DoNotOptimize(list.text());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_MimeAppsList_SetAndWrite)->Arg(100)->Arg(20000)->Unit(benchmark::kMillisecond);

struct Scratch {
    QTemporaryDir dir;
    FormatWordsApplier applier{QStringLiteral("Vornalt"), QStringLiteral("Lanmira"), environment()};

    FormatWordsApplier::Environment environment() const {
        FormatWordsApplier::Environment env;
        env.configHome = dir.path().toStdString() + "/config";
        env.dataHome = dir.path() + QStringLiteral("/data");
        env.programPath = QStringLiteral("/usr/bin/lanmira");
        return env;
    }
};

FormatWordsApplier::Words withAssociation(bool on) {
    FormatWordsApplier::Words words;
    words.fill(5);
    words[IMAGELIB_FMT_PNG] = words[IMAGELIB_FMT_JPEG] = on ? 7 : 5;
    return words;
}

// What the user-interface thread spends on OK: the words change, the files are queued.
void BM_FormatWords_ApplyOnUiThread(benchmark::State& state) {
    Scratch scratch;
    BrowserList list;
    bool on = false;
    for (auto _ : state) {
        on = !on;
        benchmark::DoNotOptimize(scratch.applier.apply(list, withAssociation(on)));
        state.PauseTiming();
        FormatWordsApplier::waitForWrites();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FormatWords_ApplyOnUiThread)->Iterations(20)->Unit(benchmark::kMillisecond);

// What the writer thread then does for two formats' association bit, on the real file
// system with its syncs; the desktop's MIME database maps the extensions.
void BM_FormatWords_WriteFiles(benchmark::State& state) {
    Scratch scratch;
    bool on = false;
    for (auto _ : state) {
        on = !on;
        benchmark::DoNotOptimize(
            scratch.applier.writeFiles(withAssociation(!on), withAssociation(on), 0, 0, 1));
    }
}
BENCHMARK(BM_FormatWords_WriteFiles)->Iterations(10)->Unit(benchmark::kMillisecond);

// The part of an apply that stores the words, for comparison.
void BM_BrowserSettings_Save(benchmark::State& state) {
    QTemporaryDir dir;
    const BrowserSettings settings(QStringLiteral("Vornalt"), QStringLiteral("Lanmira"),
                                   dir.path().toStdString());
    BrowserList list;
    for (auto _ : state)
        settings.save(list);
}
BENCHMARK(BM_BrowserSettings_Save)->Unit(benchmark::kMillisecond);

} // namespace
