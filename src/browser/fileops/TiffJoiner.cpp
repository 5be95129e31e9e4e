#include "browser/fileops/TiffJoiner.h"

#include "i18n/i18n.h"
#include "imagelib/imagelib.h"
#include "imagelib/iopt.h"
#include "platform/TextFormat.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>

namespace lanmira {
namespace {

struct DibFree {
    void operator()(void* dib) const { ImageLib_Free(dib); }
};
using Dib = std::unique_ptr<void, DibFree>;

QString errorOf(const ImageIoParams& params) {
    std::size_t n = 0;
    while (n < std::size(params.errorText) && params.errorText[n] != 0)
        ++n;
    return QString::fromUtf16(params.errorText, static_cast<qsizetype>(n));
}

Dib openPage(const QString& path, int page, ImageIoParams* params) {
    std::memset(params, 0, sizeof *params);
    params->pageIndex = page;
    return Dib(ImageLib_Open(QFile::encodeName(path).constData(), params));
}

ImageIoParams saveParams(bool append) {
    ImageIoParams params{};
    params.format = IMAGELIB_FMT_TIFF;
    const IoptOptions options = iopt_get_default(IMAGELIB_FMT_TIFF);
    params.formatOption = options.value1;
    for (int k = 0; k < 4; ++k)
        params.optionFlags[k] = static_cast<std::uint8_t>(options.value2 >> (8 * k));
    if (append)
        params.optionBytes[0] = IMAGELIB_OPT_APPEND_PAGE;
    return params;
}

bool ok(const TiffJoiner::Hooks& hooks, const QString& text) {
    return !hooks.ask || hooks.ask(text) == TiffJoiner::Answer::Ok;
}

} // namespace

TiffJoiner::Result TiffJoiner::join(const std::vector<Source>& sources, const QString& output,
                                    const Hooks& hooks) {
    Result result;
    const QFileInfo info(output);
    const QString temp = info.absolutePath() + QStringLiteral("/.") + info.fileName() + u'.' +
                         QString::number(QRandomGenerator::global()->generate(), 36) +
                         QStringLiteral(".lanmira-part.tif");
    const QByteArray tempName = QFile::encodeName(temp);
    const auto cancelled = [&] { return hooks.cancel && hooks.cancel->load(); };
    bool stop = false;

    for (std::size_t i = 0; i < sources.size() && !stop; ++i) {
        if (hooks.progress)
            hooks.progress(static_cast<int>(i * 100 / sources.size()));
        const Source& source = sources[i];
        ImageIoParams params{};
        Dib page = openPage(source.imagePath, 0, &params);
        if (!page) {
            const QString error = errorOf(params);
            stop = !ok(hooks, error.isEmpty()
                                  ? formatText(i18n_stringW("ids_lanmira_openfail2"), {source.name})
                                  : formatText(i18n_stringW("ids_lanmira_openfail1"),
                                               {source.name, error}));
            continue;
        }
        const int count = std::max(1, params.pageCount);
        for (int p = 0; p < count && !stop; ++p) {
            if (cancelled()) {
                stop = true;
                break;
            }
            if (p > 0) {
                page = openPage(source.imagePath, p, &params);
                if (!page) {
                    const QString pageName =
                        formatText(i18n_stringW("ids_lanmira_pageno"), {source.name, p + 1});
                    const QString error = errorOf(params);
                    stop = !ok(
                        hooks,
                        error.isEmpty()
                            ? formatText(i18n_stringW("ids_lanmira_pagefail2"), {pageName})
                            : formatText(i18n_stringW("ids_lanmira_pagefail1"), {pageName, error}));
                    continue;
                }
            }
            ImageIoParams save = saveParams(result.pages > 0);
            if (ImageLib_Save(tempName.constData(), page.get(), &save) == 0) {
                const QString error = errorOf(save);
                stop =
                    !ok(hooks, error.isEmpty()
                                   ? formatText(i18n_stringW("ids_calvora_savefilefail2"), {output})
                                   : formatText(i18n_stringW("ids_calvora_savefilefail1"),
                                                {output, error}));
                continue;
            }
            ++result.pages;
        }
        if (cancelled())
            stop = true;
        if (!stop && hooks.pauseMs > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(hooks.pauseMs));
    }

    if (stop || result.pages == 0) {
        std::remove(tempName.constData());
        result.outcome = stop ? Outcome::Cancelled : Outcome::Nothing;
        result.pages = 0;
        return result;
    }
    if (hooks.progress)
        hooks.progress(100);
    if (std::rename(tempName.constData(), QFile::encodeName(output).constData()) != 0) {
        const QString error = QString::fromLocal8Bit(std::strerror(errno));
        std::remove(tempName.constData());
        ok(hooks, formatText(i18n_stringW("ids_calvora_savefilefail1"), {output, error}));
        result.outcome = Outcome::Nothing;
        result.pages = 0;
        return result;
    }
    result.outcome = Outcome::Written;
    return result;
}

} // namespace lanmira
