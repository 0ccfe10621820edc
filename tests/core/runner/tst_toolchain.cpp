#include "runner/toolchain.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

namespace {

// Writes an executable shell script.
void script(const QString &path, const QString &body)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(("#!/bin/sh\n" + body + "\n").toUtf8());
    file.close();
    file.setPermissions(file.permissions() | QFile::ExeOwner);
}

} // namespace

class TestToolchain : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    QString path(const QString &relative) const { return m_dir.filePath(relative); }

    // Stand-ins for xcode-select and xcrun that answer like the real ones.
    AppleTools appleTools(const QString &developerDir, int xcrunStatus = 0)
    {
        script(path(QStringLiteral("bin/xcode-select")), QStringLiteral("echo '%1'").arg(developerDir));
        script(path(QStringLiteral("bin/xcrun")), QStringLiteral(
            "case \"$1\" in --find) echo '  %1/usr/bin/swiftc  ';; *) echo '%1/SDKs/MacOSX.sdk';; esac\nexit %2")
                   .arg(developerDir).arg(xcrunStatus));
        return {path(QStringLiteral("bin/xcode-select")), path(QStringLiteral("bin/xcrun"))};
    }

private Q_SLOTS:
    void versionIn_data()
    {
        QTest::addColumn<QString>("banner");
        QTest::addColumn<QString>("version");
        QTest::newRow("apple") << "Apple Swift version 6.2 (swiftlang-6.2.0.19.9 clang-1700.3.19.1)" << "6.2";
        QTest::newRow("three parts") << "Apple Swift version 6.2.1 (swiftlang-6.2.1)" << "6.2";
        QTest::newRow("linux") << "Swift version 6.3.1 (swift-6.3.1-RELEASE)\nTarget: x86_64-unknown-linux-gnu" << "6.3";
        QTest::newRow("two digits") << "Swift version 5.10.1" << "5.10";
        QTest::newRow("no version") << "swiftc: command not found" << "?";
    }

    void versionIn()
    {
        QFETCH(QString, banner);
        QFETCH(QString, version);
        QCOMPARE(Toolchain::versionIn(banner), version);
    }

    void sandboxMarkerPresenceOnly()
    {
        qputenv("APP_SANDBOX_CONTAINER_ID", "");
        QVERIFY(Toolchain::inSandbox());
        qunsetenv("APP_SANDBOX_CONTAINER_ID");
        QVERIFY(!Toolchain::inSandbox());
    }

    void xcrunSearch()
    {
        const QString dev = path(QStringLiteral("xcrun-dev"));
        // The version query's status is ignored; its error output counts.
        script(dev + QStringLiteral("/usr/bin/swiftc"), QStringLiteral("echo 'Apple Swift version 6.2.1' >&2\nexit 1"));
        const std::optional<Toolchain> found = Toolchain::findWithXcrun(appleTools(dev));
        QVERIFY(found);
        QCOMPARE(found->swiftc, dev + QStringLiteral("/usr/bin/swiftc"));
        QCOMPARE(found->sdk, dev + QStringLiteral("/SDKs/MacOSX.sdk"));
        QCOMPARE(found->version, QStringLiteral("6.2"));
        QVERIFY(!found->interpreter);

        QVERIFY(!Toolchain::findWithXcrun(appleTools(dev, 1)));
        QVERIFY(!Toolchain::findWithXcrun({path(QStringLiteral("bin/none")), path(QStringLiteral("bin/xcrun"))}));
    }

    void sandboxLayouts()
    {
        const QString dev = path(QStringLiteral("sandbox-dev"));
        const QString xcodeBin = dev + QStringLiteral("/Toolchains/XcodeDefault.xctoolchain/usr/bin");
        const QString cltBin = dev + QStringLiteral("/usr/bin");
        const QString banner = QStringLiteral("echo 'Apple Swift version 6.2 (swiftlang)'");
        for (const QString &bin : {xcodeBin, cltBin}) {
            script(bin + QStringLiteral("/swift-frontend"), QStringLiteral("exit 0"));
            script(bin + QStringLiteral("/swiftc"), banner);
        }
        QVERIFY(QDir().mkpath(dev + QStringLiteral("/SDKs/MacOSX.sdk")));
        const AppleTools tools = appleTools(dev);

        // The Xcode layout's SDK is missing, so the Command Line Tools layout wins.
        std::optional<Toolchain> found = Toolchain::findInSandbox(tools);
        QVERIFY(found);
        QCOMPARE(found->swiftc, cltBin + QStringLiteral("/swiftc"));
        QCOMPARE(found->interpreter, std::optional<QString>(cltBin + QStringLiteral("/swift-frontend")));

        // With both complete, Xcode's comes first.
        QVERIFY(QDir().mkpath(dev + QStringLiteral("/Platforms/MacOSX.platform/Developer/SDKs/MacOSX.sdk")));
        found = Toolchain::findInSandbox(tools);
        QVERIFY(found);
        QCOMPARE(found->swiftc, xcodeBin + QStringLiteral("/swiftc"));
        QCOMPARE(found->version, QStringLiteral("6.2"));

        QVERIFY(!Toolchain::findInSandbox(appleTools(path(QStringLiteral("empty-dev")))));
    }

    void directorySearch()
    {
        const QString first = path(QStringLiteral("linux/a"));
        const QString second = path(QStringLiteral("linux/b"));
        QVERIFY(QDir().mkpath(first));
        QFile notExecutable(first + QStringLiteral("/swiftc"));
        QVERIFY(notExecutable.open(QIODevice::WriteOnly));
        notExecutable.close();
        script(second + QStringLiteral("/swiftc"), QStringLiteral("echo 'Swift version 6.3.1 (swift-6.3.1-RELEASE)'"));

        const std::optional<Toolchain> found
            = Toolchain::findInDirectories({QStringLiteral("relative/bin"), path(QStringLiteral("none")), first, second});
        QVERIFY(found);
        QCOMPARE(found->swiftc, second + QStringLiteral("/swiftc"));
        QCOMPARE(found->version, QStringLiteral("6.3"));
        QVERIFY(found->sdk.isEmpty() && !found->interpreter);
        QVERIFY(!Toolchain::findInDirectories({first}));
    }

    // The interpreter is the swift-frontend beside swiftc, or beside the file
    // a linked swiftc points to.
    void interpreterBesideTheCompiler()
    {
        const QString toolchain = path(QStringLiteral("beside/toolchain/usr/bin"));
        const QString links = path(QStringLiteral("beside/links"));
        script(toolchain + QStringLiteral("/swift-driver"), QStringLiteral("echo 'Swift version 6.3.1'"));
        script(toolchain + QStringLiteral("/swift-frontend"), QStringLiteral("exit 0"));
        QVERIFY(QDir().mkpath(links));
        QVERIFY(QFile::link(toolchain + QStringLiteral("/swift-driver"), toolchain + QStringLiteral("/swiftc")));
        QVERIFY(QFile::link(toolchain + QStringLiteral("/swiftc"), links + QStringLiteral("/swiftc")));

        for (const QString &directory : {toolchain, links}) {
            const std::optional<Toolchain> found = Toolchain::findInDirectories({directory});
            QVERIFY(found);
            QCOMPARE(found->swiftc, directory + QStringLiteral("/swiftc"));
            QCOMPARE(found->interpreter, std::optional<QString>(toolchain + QStringLiteral("/swift-frontend")));
            QVERIFY(!found->compiling().interpreter);
        }
    }

    // An old swiftc early in the search must not hide a usable one later;
    // with only old ones, the first is still reported (the app says it is too old).
    void directorySearchPrefersAUsableVersion()
    {
        const QString old = path(QStringLiteral("versions/usr-bin"));
        const QString older = path(QStringLiteral("versions/older"));
        const QString current = path(QStringLiteral("versions/opt-swift"));
        script(old + QStringLiteral("/swiftc"), QStringLiteral("echo 'Swift version 5.9.2 (swift-5.9.2-RELEASE)'"));
        script(older + QStringLiteral("/swiftc"), QStringLiteral("echo 'Swift version 5.8 (swift-5.8-RELEASE)'"));
        script(current + QStringLiteral("/swiftc"), QStringLiteral("echo 'Swift version 6.2 (swift-6.2-RELEASE)'"));

        std::optional<Toolchain> found = Toolchain::findInDirectories({old, older, current});
        QVERIFY(found);
        QCOMPARE(found->swiftc, current + QStringLiteral("/swiftc"));
        found = Toolchain::findInDirectories({old, older});
        QVERIFY(found);
        QCOMPARE(found->version, QStringLiteral("5.9"));
    }
};

QTEST_GUILESS_MAIN(TestToolchain)
#include "tst_toolchain.moc"
