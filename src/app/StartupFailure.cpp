#include "app/StartupFailure.h"

#include "app/ProductVersion.h"

#include <QMessageBox>

#include <cstdio>

namespace lanmira {

void reportStartupFailure(const QString& text) {
    std::fprintf(stderr, "lanmira: %s\n", text.toLocal8Bit().constData());
    std::fflush(stderr);
    QMessageBox box(QMessageBox::Critical, QStringLiteral(LANMIRA_PRODUCT_NAME), text,
                    QMessageBox::Ok);
    box.setObjectName(QStringLiteral("startupFailure"));
    box.exec();
}

} // namespace lanmira
