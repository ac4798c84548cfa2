#include "windows/frmAbout.h"

#include "windows/wiring.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

frmAbout::frmAbout() : Form(QStringLiteral("frmAbout"), QStringLiteral("About Brindlewake")) {
    lblProduct = named<QLabel>("lblProduct", this);
    QFont large = lblProduct->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    lblProduct->setFont(large);
    lblDevelopedBy = named<QLabel>("lblDevelopedBy", QStringLiteral("Developed by:"), this);
    lblMaker = named<QLabel>("lblMaker", QStringLiteral("The Brindlewake team"), this);
    lblPOPServer = named<QLabel>("lblPOPServer", this);
    lblSMTPServer = named<QLabel>("lblSMTPServer", this);

    cmdOkAbout = named<QPushButton>("cmdOkAbout", QStringLiteral("OK"), this);
    connectHandler(cmdOkAbout, &QPushButton::clicked, this, &frmAbout::cmdOkAbout_Click);
    closeOnEscape();

    auto* rows = new QVBoxLayout(this);
    for (QLabel* label : {lblProduct, lblDevelopedBy, lblMaker, lblPOPServer, lblSMTPServer}) {
        if (label == lblPOPServer) {
            rows->addSpacing(rows->spacing());
        }
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        rows->addWidget(label);
    }
    rows->addStretch();
    rows->addWidget(cmdOkAbout, 0, Qt::AlignRight);
    cmdOkAbout->setFocus();
    resizeToText(50, 10);
}
