#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillon-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLON_VERSION));
    QTextStream out(stdout);
    const QStringList args = QCoreApplication::arguments();
    if (args.contains(QStringLiteral("--version"))) {
        out << "quillon-cli " << QUILLON_VERSION << "\n";
        return 0;
    }
    out << "Usage: quillon-cli (--chain FILE | --filter DEFINITION...) --tool PATH --output DIR\n";
    return args.contains(QStringLiteral("--help")) ? 0 : 2;
}
