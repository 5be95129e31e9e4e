#include "camera/panels/CCameraHistogramDlg.h"

#include "camera/panels/CHistogramGraph.h"
#include "camera/panels/CMFCEditWithReturn.h"
#include "camera/panels/CSpinButton.h"
#include "dscap/ICameraControl.h"
#include "i18n/i18n.h"
#include "platform/Messages.h"
#include "platform/PostedMessage.h"

#include <QComboBox>
#include <QPushButton>
#include <QSignalBlocker>

#include <algorithm>
#include <cstring>

namespace lanmira {
namespace {
constexpr char kDialog[] = "IDD_CAMERAHISTOGRAM";
using Blocks = std::array<double, 4 * 256>;

void histogramReady(const double* blue, const double* green, const double* red, const double* grey,
                    void* context) {
    const ReceiverToken token = ReceiverRegistry::fromContext(context);
    if (!ReceiverRegistry::alive(token))
        return;
    Blocks copy;
    const double* blocks[4] = {blue, green, red, grey};
    for (std::size_t c = 0; c < 4; ++c) {
        if (blocks[c])
            std::memcpy(copy.data() + c * 256, blocks[c], 256 * sizeof(double));
        else
            std::fill_n(copy.data() + c * 256, 256, 0.0);
    }
    ReceiverRegistry::post(token, msg::HISTOGRAM_DATA, 0, 0, makePayload(copy));
}

void outputChanged(void* context) {
    ReceiverRegistry::post(ReceiverRegistry::fromContext(context), msg::HISTOGRAM_OUTPUT_CHANGED, 0,
                           0);
}

// The edit's text as a level, or -1 when it is not a number.
int editLevel(const QString& text) {
    bool ok = false;
    const uint v = text.trimmed().toUInt(&ok);
    if (!ok)
        return -1;
    return static_cast<int>(std::min(v, 255u));
}
} // namespace

const char* CCameraHistogramDlg::dialogName() {
    return kDialog;
}

std::vector<int> CCameraHistogramDlg::controlIds() {
    return {kRefresh, kDefaults, kAuto};
}

CCameraHistogramDlg::CCameraHistogramDlg(QObject* owner, QWidget* parent)
    : CCameraBaseDlg(owner, 232, 214, parent) {
    setObjectName(QStringLiteral("CCameraHistogramDlg"));
    m_graph = place(new CHistogramGraph, kGraph, {8, 4, 224, 124}, kAnchorStretch);
    m_list = place(new QComboBox, kChannels, {6, 128, 110, 152}, kAnchorLeftHalf);
    m_refresh = place(new QPushButton, kRefresh, {122, 128, 226, 152}, kAnchorRightHalf);
    m_defaults = place(new QPushButton, kDefaults, {6, 156, 110, 180}, kAnchorLeftHalf);
    m_auto = place(new QPushButton, kAuto, {122, 156, 226, 180}, kAnchorRightHalf);
    m_low = place(new CMFCEditWithReturn, kLowEdit, {8, 186, 52, 208});
    m_lowSpin = place(new CSpinButton, kLowSpin, {52, 186, 68, 208});
    m_high = place(new CMFCEditWithReturn, kHighEdit, {164, 186, 208, 208});
    m_highSpin = place(new CSpinButton, kHighSpin, {208, 186, 224, 208});
    m_low->setReturnMessage(this, msg::HISTOGRAM_LOW_RETURN);
    m_high->setReturnMessage(this, msg::HISTOGRAM_HIGH_RETURN);
    setTextIds(controlIds());
    // The edits and the list have no label of their own on the panel.
    m_low->setAccessibleName(i18n_stringW("ids_lanmira_histogram_low"));
    m_high->setAccessibleName(i18n_stringW("ids_lanmira_histogram_high"));
    m_list->setAccessibleName(i18n_stringW("ids_lanmira_histogram_channel"));
    for (CSpinButton* s : {m_lowSpin, m_highSpin})
        s->setRange(0, 255);

    connect(m_list, &QComboBox::activated, this, &CCameraHistogramDlg::chooseEntry);
    connect(m_refresh, &QPushButton::clicked, this, &CCameraHistogramDlg::refreshHistogram);
    connect(m_auto, &QPushButton::clicked, this, &CCameraHistogramDlg::autoLevels);
    connect(m_defaults, &QPushButton::clicked, this, &CCameraHistogramDlg::defaultLevels);
    connect(m_lowSpin, &CSpinButton::stepped, this, [this](int d) { spin(true, d); });
    connect(m_highSpin, &CSpinButton::stepped, this, [this](int d) { spin(false, d); });
    connect(m_graph, &CHistogramGraph::markerDropped, this, &CCameraHistogramDlg::markerDropped);
}

void CCameraHistogramDlg::InitControls() {
    InitPanel(kDialog);
}

void CCameraHistogramDlg::OnDetach() {
    if (!control())
        return;
    control()->SetNotifyCallback(nullptr, nullptr);
    control()->SetHistogramCallback(nullptr, nullptr);
}

void CCameraHistogramDlg::UpdateControls() {
    const bool on = attached();
    for (QWidget* w : std::initializer_list<QWidget*>{m_low, m_high, m_lowSpin, m_highSpin,
                                                      m_refresh, m_defaults, m_auto, m_list})
        w->setEnabled(on);
    m_graph->picture().attached = on;
    if (!on) {
        m_graph->update();
        return;
    }
    std::int32_t grey = 0;
    if (control()->GetMonochrome(&grey) >= 0)
        m_grey = grey != 0;
    if (!colour())
        m_grey = true;
    m_channel = m_grey ? HistogramLevels::kGrey : HistogramLevels::kAllColours;
    rebuildList();
    updateTexts();
    control()->SetHistogramCallback(histogramReady, m_receiver.context());
    control()->SetNotifyCallback(outputChanged, m_receiver.context());
}

HistogramLevels CCameraHistogramDlg::readLevels() const {
    HistogramLevels levels;
    if (control()) {
        HistogramLevels read;
        if (control()->GetLevelRange(read.low.data(), read.high.data()) >= 0)
            levels = read;
    }
    return levels;
}

void CCameraHistogramDlg::writeLevels(const HistogramLevels& levels) {
    if (control())
        control()->SetLevelRange(levels.low.data(), levels.high.data());
}

void CCameraHistogramDlg::rebuildList() {
    HistogramPicture& pic = m_graph->picture();
    for (auto& block : pic.bins)
        block.fill(0.0);
    const QSignalBlocker block(m_list);
    m_list->clear();
    if (m_grey) {
        m_channel = HistogramLevels::kGrey;
        m_list->addItem(i18n_stringW("ids_calvora_camerapane_gray"));
        m_list->setCurrentIndex(0);
    } else {
        for (const char* name : {"ids_calvora_camerapane_blue", "ids_calvora_camerapane_green",
                                 "ids_calvora_camerapane_red", "ids_calvora_camerapane_rgb"})
            m_list->addItem(i18n_stringW(name));
        if (m_channel == HistogramLevels::kGrey)
            m_channel = HistogramLevels::kAllColours;
        m_list->setCurrentIndex(std::min(m_channel, 3));
    }
    pic.grey = m_grey;
    pic.channel = m_channel;
}

void CCameraHistogramDlg::updateTexts() {
    HistogramPicture& pic = m_graph->picture();
    pic.levels = readLevels();
    pic.channel = m_channel;
    // Only a changed number is written, so the user's typing is not disturbed.
    const QString low = QString::number(pic.levels.lowEdge(m_channel));
    const QString high = QString::number(pic.levels.highEdge(m_channel));
    if (m_low->text() != low)
        m_low->setText(low);
    if (m_high->text() != high)
        m_high->setText(high);
}

void CCameraHistogramDlg::chooseEntry(int entry) {
    if (m_grey) {
        m_channel = HistogramLevels::kGrey;
    } else if (entry >= 0 && entry < 3) {
        m_channel = entry;
    } else if (entry == 3) {
        m_channel = HistogramLevels::kAllColours;
        HistogramLevels levels = readLevels();
        levels.joinColours();
        writeLevels(levels);
    }
    updateTexts();
    m_graph->update();
}

void CCameraHistogramDlg::refreshHistogram() {
    if (control())
        control()->SetHistogramCallback(histogramReady, m_receiver.context());
}

void CCameraHistogramDlg::autoLevels() {
    if (!control())
        return;
    control()->SetHistogramCallback(histogramReady, m_receiver.context());
    control()->AutoLevelRange();
    updateTexts();
    m_graph->update();
}

void CCameraHistogramDlg::defaultLevels() {
    writeLevels(HistogramLevels{});
    updateTexts();
    m_graph->update();
}

void CCameraHistogramDlg::edgeTyped(bool low) {
    const int value = editLevel((low ? m_low : m_high)->text());
    if (value < 0 || !attached())
        return;
    const HistogramLevels before = readLevels();
    HistogramLevels levels = before;
    if (low)
        levels.typeLow(m_channel, value);
    else
        levels.typeHigh(m_channel, value);
    const bool changed = levels != before;
    if (changed)
        writeLevels(levels);
    updateTexts();
    if (changed)
        m_graph->update();
}

void CCameraHistogramDlg::spin(bool low, int delta) {
    CMFCEditWithReturn* edit = low ? m_low : m_high;
    int value = editLevel(edit->text());
    if (value < 0)
        value = low ? m_graph->picture().levels.lowEdge(m_channel)
                    : m_graph->picture().levels.highEdge(m_channel);
    edit->setText(QString::number(std::clamp(value + delta, 0, 255)));
    edgeTyped(low);
}

void CCameraHistogramDlg::markerDropped(bool low, int level) {
    if (!attached())
        return;
    HistogramLevels levels = readLevels();
    if (low)
        levels.dropLow(m_channel, level);
    else
        levels.dropHigh(m_channel, level);
    writeLevels(levels);
    updateTexts();
    m_graph->update();
}

void CCameraHistogramDlg::customEvent(QEvent* event) {
    PostedMessage* m = PostedMessage::from(event);
    if (!m) {
        CCameraBaseDlg::customEvent(event);
        return;
    }
    switch (m->message()) {
    case msg::HISTOGRAM_LOW_RETURN:
        edgeTyped(true);
        break;
    case msg::HISTOGRAM_HIGH_RETURN:
        edgeTyped(false);
        break;
    case msg::HISTOGRAM_DATA:
        if (auto* blocks = m->payload<Blocks>(); blocks && attached()) {
            HistogramPicture& pic = m_graph->picture();
            for (std::size_t c = 0; c < 4; ++c)
                std::copy_n(blocks->data() + c * 256, 256, pic.bins[c].data());
            updateTexts();
            m_graph->update();
        }
        break;
    case msg::HISTOGRAM_OUTPUT_CHANGED:
        if (!attached())
            break;
        if (std::int32_t grey = 0; control()->GetMonochrome(&grey) >= 0)
            m_grey = grey != 0 || !colour();
        rebuildList();
        updateTexts();
        refreshHistogram();
        m_graph->update();
        break;
    default:
        CCameraBaseDlg::customEvent(event);
        break;
    }
}

} // namespace lanmira
