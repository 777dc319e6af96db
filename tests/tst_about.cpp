// The about box: its texts, the two links and their hover underline, and closing it.
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMap>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "Version.h"
#include "about/frmAbout.h"
#include "core/AppError.h"
#include "core/modGeneral.h"
#include "core/ui/UiServices.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TestDatabase.h"

namespace {

QLabel* Label(const QWidget& dialog, const char* name) {
    return dialog.findChild<QLabel*>(QString::fromLatin1(name));
}

// A mouse move without buttons, as the window system sends it while the pointer hovers.
void MoveMouse(QWidget* target, const QPointF& position) {
    QMouseEvent move(QEvent::MouseMove, position, target->mapToGlobal(position), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &move);
}

QPointF Middle(const QWidget* widget) { return QPointF(widget->width() / 2, widget->height() / 2); }

bool Underlined(const QLabel* label) { return label->font().underline(); }

}  // namespace

class TestAbout : public QObject {
    Q_OBJECT

private:
    QStringList m_opened;
    QStringList m_workingFolders;

    // Records what the program asks the desktop to open, instead of opening it.
    void RecordOpenedLinks() {
        UiServices::SetOpenerHandler([this](const QString& target, const QString& folder) {
            m_opened << target;
            m_workingFolders << folder;
        });
    }

    // Opens the dialog with exec() and presses `key` in it as soon as it is shown; the dialog's
    // result goes to `result`. A dialog that does not close is closed with -1, so the test never
    // hangs.
    void ExecAndPress(Qt::Key key, int* result) {
        frmAbout dialog;
        QWidget* seenModal = nullptr;
        bool stayedOpen = false;
        QTimer::singleShot(0, &dialog, [&] {
            seenModal = QApplication::activeModalWidget();
            if (seenModal) {
                QTest::keyClick(seenModal, key);
            }
            stayedOpen = dialog.isVisible();
            if (stayedOpen) {
                dialog.done(-1);
            }
        });
        *result = dialog.exec();
        QCOMPARE(seenModal, static_cast<QWidget*>(&dialog));
        QVERIFY(!stayedOpen);
        QTRY_VERIFY(!dialog.isVisible());
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    }

private Q_SLOTS:
    void initTestCase() {
        TestDatabase::IsolateEnvironment();
        RecordOpenedLinks();
    }
    void cleanupTestCase() { UiServices::SetOpenerHandler({}); }
    void init() {
        m_opened.clear();
        m_workingFolders.clear();
        QFile::remove(QStringLiteral("errors.log"));
    }

    void captionAndTextsAreThoseOfTheVersionInformation() {
        frmAbout dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Vizitka programa Morvena"));
        QCOMPARE(Label(dialog, "lblTitle")->text(), QStringLiteral("Morvena"));
        QCOMPARE(Label(dialog, "lblVersion")->text(),
                 QStringLiteral("Različica 1.3.0 - 22.11.2026"));
        QCOMPARE(Label(dialog, "lblLegal")->text(), QString::fromUtf8(Version::LegalNotice));
        QCOMPARE(Label(dialog, "lblWebLabel")->text(), QStringLiteral("Splet:"));
        QCOMPARE(Label(dialog, "lblWeb")->text(),
                 QStringLiteral("https://www.example.org/morvena"));
        QCOMPARE(Label(dialog, "lblEmailLabel")->text(), QStringLiteral("E-pošta:"));
        QCOMPARE(Label(dialog, "lblEmail")->text(), QStringLiteral("morvena@example.org"));
        QVERIFY(!Label(dialog, "lblDisclaimer")->text().trimmed().isEmpty());
        auto* ok = dialog.findChild<QPushButton*>(QStringLiteral("cmdOK"));
        QVERIFY(ok);
        QCOMPARE(ok->text(), QStringLiteral("OK"));
        QVERIFY(ok->isDefault());
        QVERIFY(dialog.isModal());
    }

    void versionLineIsBuiltFromTheVersionNumbersAndTheReleaseDate() {
        frmAbout dialog;
        QCOMPARE(Label(dialog, "lblVersion")->text(),
                 QStringLiteral("Različica ") + QString::number(Version::Major) + QLatin1Char('.') +
                     QString::number(Version::Minor) + QLatin1Char('.') +
                     QString::number(Version::Revision) + QStringLiteral(" - ") +
                     QString::fromUtf8(Version::ReleaseDate));
    }

    void linksLookLikeLinksAndStartWithoutUnderline() {
        frmAbout dialog;
        for (const char* name : {"lblWeb", "lblEmail"}) {
            QLabel* link = Label(dialog, name);
            QVERIFY2(link, name);
            QCOMPARE(link->cursor().shape(), Qt::PointingHandCursor);
            QCOMPARE(link->palette().color(QPalette::WindowText),
                     link->palette().color(QPalette::Link));
            QVERIFY(link->hasMouseTracking());
            QVERIFY(!Underlined(link));
        }
        QVERIFY(dialog.hasMouseTracking());
    }

    void programIconIsShown() {
        QVERIFY2(QFile::exists(frmAbout::ProgramIconFile()),
                 qPrintable(frmAbout::ProgramIconFile()));
        frmAbout dialog;
        QLabel* icon = Label(dialog, "picIcon");
        QVERIFY(icon);
        QVERIFY(!icon->pixmap().isNull());
        QVERIFY(!dialog.windowIcon().isNull());
    }

    void clickOnWebOpensTheWebPageAndRemovesTheUnderline() {
        frmAbout dialog;
        dialog.show();
        QLabel* web = Label(dialog, "lblWeb");
        MoveMouse(web, Middle(web));
        QVERIFY(Underlined(web));
        QTest::mouseClick(web, Qt::LeftButton, Qt::NoModifier, Middle(web).toPoint());
        QCOMPARE(m_opened, QStringList{"https://www.example.org/morvena"});
        QCOMPARE(m_workingFolders.size(), 1);
        QCOMPARE(m_workingFolders.first(), modGeneral::DefaultInstallDir() + QLatin1Char('/'));
        QVERIFY(!Underlined(web));
        QVERIFY(dialog.isVisible());
    }

    void clickOnEmailOpensANewMailAndRemovesTheUnderline() {
        frmAbout dialog;
        dialog.show();
        QLabel* email = Label(dialog, "lblEmail");
        MoveMouse(email, Middle(email));
        QVERIFY(Underlined(email));
        QTest::mouseClick(email, Qt::LeftButton, Qt::NoModifier, Middle(email).toPoint());
        QCOMPARE(m_opened, QStringList{"mailto:morvena@example.org"});
        QVERIFY(!Underlined(email));
    }

    void rightClickOrReleaseOutsideOpensNothing() {
        frmAbout dialog;
        dialog.show();
        QLabel* web = Label(dialog, "lblWeb");
        QTest::mouseClick(web, Qt::RightButton, Qt::NoModifier, Middle(web).toPoint());
        QTest::mousePress(web, Qt::LeftButton, Qt::NoModifier, Middle(web).toPoint());
        QTest::mouseRelease(web, Qt::LeftButton, Qt::NoModifier,
                            QPoint(web->width() + 20, web->height() / 2));
        QVERIFY(m_opened.isEmpty());
    }

    void failingOpenerTakesTheErrorPathOfTheHandler() {
        UiServices::SetOpenerHandler([](const QString&, const QString&) {
            ErrorPath::Raise(53, QStringLiteral("Datoteke ni mogoče odpreti"));
        });
        MessageRecorder messages;
        {
            frmAbout dialog;
            dialog.show();
            QLabel* email = Label(dialog, "lblEmail");
            QTest::mouseClick(email, Qt::LeftButton, Qt::NoModifier, Middle(email).toPoint());
            QVERIFY(dialog.isVisible());
        }
        RecordOpenedLinks();
        QCOMPARE(messages.Texts(), QStringList{ErrorPath::UnexpectedErrorMessage});
        QFile log(QStringLiteral("errors.log"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(QString::fromUtf8(log.readAll())
                    .contains(QStringLiteral(
                        "frmAbout:lblEmail_Click->Morvena->Datoteke ni mogoče odpreti")));
    }

    void hoverUnderlinesOnlyStrictlyInside_data() {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("where");
        QTest::addColumn<bool>("underlined");
        for (const QString label : {QStringLiteral("lblWeb"), QStringLiteral("lblEmail")}) {
            const QByteArray prefix = label.toLatin1() + ": ";
            QTest::newRow(prefix + "inside") << label << "inside" << true;
            QTest::newRow(prefix + "one pixel from the top left") << label << "near" << true;
            QTest::newRow(prefix + "left edge x = 0") << label << "left" << false;
            QTest::newRow(prefix + "top edge y = 0") << label << "top" << false;
            QTest::newRow(prefix + "right edge x = width") << label << "right" << false;
            QTest::newRow(prefix + "bottom edge y = height") << label << "bottom" << false;
            QTest::newRow(prefix + "outside left") << label << "outsideLeft" << false;
            QTest::newRow(prefix + "outside below") << label << "outsideBelow" << false;
        }
    }
    void hoverUnderlinesOnlyStrictlyInside() {
        QFETCH(QString, label);
        QFETCH(QString, where);
        QFETCH(bool, underlined);
        frmAbout dialog;
        dialog.show();
        QLabel* link = dialog.findChild<QLabel*>(label);
        QVERIFY(link);
        const double w = link->width();
        const double h = link->height();
        const QMap<QString, QPointF> positions{
            {"inside", QPointF(w / 2, h / 2)},   {"near", QPointF(1, 1)},
            {"left", QPointF(0, h / 2)},         {"top", QPointF(w / 2, 0)},
            {"right", QPointF(w, h / 2)},        {"bottom", QPointF(w / 2, h)},
            {"outsideLeft", QPointF(-5, h / 2)}, {"outsideBelow", QPointF(w / 2, h + 5)},
        };
        // Start from the other state, so that the move must change it.
        if (underlined) {
            MoveMouse(&dialog, QPointF(1, 1));
            QVERIFY(!Underlined(link));
        } else {
            MoveMouse(link, Middle(link));
            QVERIFY(Underlined(link));
        }
        MoveMouse(link, positions.value(where));
        QCOMPARE(Underlined(link), underlined);
    }

    void hoverOnOneLinkLeavesTheOtherAlone() {
        frmAbout dialog;
        dialog.show();
        QLabel* web = Label(dialog, "lblWeb");
        QLabel* email = Label(dialog, "lblEmail");
        MoveMouse(web, Middle(web));
        QVERIFY(Underlined(web));
        QVERIFY(!Underlined(email));
        MoveMouse(email, Middle(email));
        QVERIFY(Underlined(web));
        QVERIFY(Underlined(email));
    }

    void moveOverTheBackgroundClearsBothUnderlines() {
        frmAbout dialog;
        dialog.show();
        QLabel* web = Label(dialog, "lblWeb");
        QLabel* email = Label(dialog, "lblEmail");
        MoveMouse(web, Middle(web));
        MoveMouse(email, Middle(email));
        QVERIFY(Underlined(web) && Underlined(email));
        MoveMouse(&dialog, QPointF(3, 3));
        QVERIFY(!Underlined(web));
        QVERIFY(!Underlined(email));
    }

    void leavingALinkClearsItsUnderline() {
        frmAbout dialog;
        dialog.show();
        QLabel* web = Label(dialog, "lblWeb");
        MoveMouse(web, Middle(web));
        QVERIFY(Underlined(web));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(web, &leave);
        QVERIFY(!Underlined(web));
    }

    void enterClosesTheDialog() {
        int result = 0;
        ExecAndPress(Qt::Key_Return, &result);
        if (QTest::currentTestFailed()) {
            return;
        }
        QCOMPARE(result, int(QDialog::Accepted));
    }

    void escapeClosesTheDialog() {
        int result = 0;
        ExecAndPress(Qt::Key_Escape, &result);
        if (QTest::currentTestFailed()) {
            return;
        }
        QCOMPARE(result, int(QDialog::Accepted));
    }

    void okButtonClosesTheDialog() {
        frmAbout dialog;
        QWidget* seen = nullptr;
        QTimer::singleShot(0, &dialog, [&] {
            seen = QApplication::activeModalWidget();
            if (auto* ok = dialog.findChild<QPushButton*>(QStringLiteral("cmdOK"))) {
                QTest::mouseClick(ok, Qt::LeftButton);
            }
            if (dialog.isVisible()) {
                dialog.done(-1);
            }
        });
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QCOMPARE(seen, &dialog);
        QTRY_VERIFY(!dialog.isVisible());
        QVERIFY(m_opened.isEmpty());
    }
};

QTEST_MAIN(TestAbout)
#include "tst_about.moc"
