// The transfer engine beside `cp -r` on one disk, and a same-file-system move of 10,000
// files. LANMIRA_BENCH_TRANSFER_MB sets the copied amount (default 2048, in 4 MB files the
// size of 12 MP JPEGs); the folders live in the build tree, which is on a real disk.
#include "browser/fileops/TransferEngine.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdlib>

using lanmira::TransferEngine;

namespace {

constexpr int kFileBytes = 4 * 1024 * 1024;

int totalMb() {
    const char* v = std::getenv("LANMIRA_BENCH_TRANSFER_MB");
    const int mb = v ? std::atoi(v) : 2048;
    return mb > 0 ? mb : 2048;
}

struct Pictures {
    QTemporaryDir dir{QStringLiteral(LANMIRA_BUILD_DIR "/bench-transfer-XXXXXX")};
    QList<QByteArray> files;
    Pictures() {
        QDir().mkpath(dir.path() + QStringLiteral("/src"));
        QByteArray block(kFileBytes, '\0');
        for (int i = 0; i < kFileBytes; ++i)
            block[i] = static_cast<char>((i * 2654435761u) >> 24);
        const int n = totalMb() * 1024 * 1024 / kFileBytes;
        for (int k = 0; k < n; ++k) {
            const QString path = dir.path() + QStringLiteral("/src/p%1.jpg").arg(k);
            QFile f(path);
            f.open(QIODevice::WriteOnly);
            block[0] = static_cast<char>(k);
            f.write(block);
            files.append(QFile::encodeName(path));
        }
    }
    QString target(const char* name) const { return dir.path() + u'/' + QLatin1String(name); }
};

Pictures& pictures() {
    static Pictures p;
    return p;
}

void BM_CpR(benchmark::State& state) {
    Pictures& p = pictures();
    for (auto _ : state) {
        const QString to = p.target("cp");
        const QByteArray cmd = "cp -r '" + QFile::encodeName(p.dir.path()) + "/src' '" +
                               QFile::encodeName(to) + "' && sync";
        if (std::system(cmd.constData()) != 0)
            state.SkipWithError("cp failed");
        state.PauseTiming();
        QDir(to).removeRecursively();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t{kFileBytes} * p.files.size());
}

void BM_EngineCopy(benchmark::State& state) {
    Pictures& p = pictures();
    for (auto _ : state) {
        const QString to = p.target("engine");
        QDir().mkpath(to);
        TransferEngine engine(TransferEngine::Mode::Copy, p.files, QFile::encodeName(to), {});
        if (!engine.run().ok())
            state.SkipWithError("copy failed");
        std::system("sync");
        state.PauseTiming();
        QDir(to).removeRecursively();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * std::int64_t{kFileBytes} * p.files.size());
}

void BM_MoveTenThousand(benchmark::State& state) {
    QTemporaryDir dir(QStringLiteral(LANMIRA_BUILD_DIR "/bench-move-XXXXXX"));
    const QString a = dir.path() + QStringLiteral("/a"), b = dir.path() + QStringLiteral("/b");
    QDir().mkpath(a);
    QDir().mkpath(b);
    QList<QByteArray> files;
    for (int k = 0; k < 10'000; ++k) {
        const QString path = a + QStringLiteral("/f%1.jpg").arg(k);
        QFile(path).open(QIODevice::WriteOnly);
        files.append(QFile::encodeName(path));
    }
    bool forth = true;
    for (auto _ : state) {
        QList<QByteArray> sources = files;
        if (!forth) {
            for (QByteArray& s : sources)
                s.replace(QFile::encodeName(a), QFile::encodeName(b));
        }
        TransferEngine engine(TransferEngine::Mode::Move, sources, QFile::encodeName(forth ? b : a),
                              {});
        if (!engine.run().ok())
            state.SkipWithError("move failed");
        forth = !forth;
    }
}

} // namespace

BENCHMARK(BM_CpR)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_EngineCopy)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_MoveTenThousand)->Unit(benchmark::kMillisecond)->Iterations(4)->UseRealTime();
