#pragma once

#include "addresses/address_source.h"
#include "components/controls/msflexgrid.h"
#include "components/controls/timer.h"
#include "windows/form.h"

#include <memory>

namespace controls {
class Announcement;
}

class QLabel;
class QLineEdit;
class QPushButton;

/** The window that finds addresses for a field of the compose window. */
class frmFind : public Form {
  public:
    frmFind();

    // compose/find_address.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void txtFind_Change();
    void txtFind_Return();
    void tmrFind_Timer();
    void lstFound_Select();
    void cmdUse_Click();
    void cmdClose_Click();
    /** Shows the window. What is chosen goes into the opener's field, which the window calls by this name. */
    void openFor(Form& opener, QLineEdit& field, const QString& fieldName);

    QLabel* lblFind;
    QLineEdit* txtFind;
    MSFlexGridLib::MSFlexGrid* lstFound;
    QLabel* lblFinding;
    controls::Announcement* annFound;
    QPushButton* cmdUse;
    QPushButton* cmdClose;
    controls::Timer* tmrFind;

    bool standsAtTheFoot() const override { return true; }

    /** Lets the arrows and the page keys in the text field move the mark in the list. */
    bool eventFilter(QObject* control, QEvent* event) override;

  protected:
    /** Divides the width among the columns. */
    void resizeEvent(QResizeEvent* event) override;

  private:
    void layOut();

    // compose/find_address.cpp
    void search();
    /** Ends the search that runs, and the pause before one. */
    void giveUp();
    void show(const addresses::FoundAddresses& outcome);
    void take(const addresses::FoundAddress& found);
    void tell(const QString& text);
    void tellMarkedRow();

    /** Made at the first search. */
    std::unique_ptr<addresses::AddressSource> source_;
    /** What the rows of the list stand for. */
    std::vector<addresses::FoundAddress> found_;
    QPointer<QLineEdit> field_;
    QString fieldName_;
    bool searching_ = false;
};
