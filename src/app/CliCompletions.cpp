// The shell completions of quillon-cli, written from its option table at
// build time (quillon-cli --completions SHELL), so they never fall behind
// the options.

#include "app/CliOptions.h"

#include <utility>

namespace quillon {

namespace {

using Value = CliOptionSpec::Value;

QString longName(const QString& name)
{
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

// The first sentence of an option's help: enough for a menu.
QString summary(const CliOptionSpec& option)
{
    const qsizetype end = option.help.indexOf(QStringLiteral(". "));
    QString text = end < 0 ? option.help : option.help.left(end + 1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

QStringList allNames()
{
    QStringList names;
    for (const CliOptionSpec& option : cliOptionTable()) {
        for (const QString& name : option.names)
            names.append(longName(name));
    }
    return names;
}

QStringList namesOf(Value value, bool withExtension)
{
    QStringList names;
    for (const CliOptionSpec& option : cliOptionTable()) {
        if (option.value == value && option.choices.isEmpty() != withExtension)
            names.append(longName(option.names.last()));
    }
    return names;
}

QString bashScript()
{
    // Options that complete alike share one case.
    QList<std::pair<QString, QStringList>> actions;
    const auto addCase = [&actions](const QStringList& names, const QString& action) {
        for (auto& [known, options] : actions) {
            if (known == action) {
                options += names;
                return;
            }
        }
        if (!names.isEmpty())
            actions.append({ action, names });
    };
    for (const CliOptionSpec& option : cliOptionTable()) {
        const QString name = longName(option.names.last());
        if (option.value == Value::Choice)
            addCase({ name },
                QStringLiteral("COMPREPLY=($(compgen -W '%1' -- \"$cur\"))").arg(option.choices.join(' ')));
        else if (option.value == Value::File && !option.choices.isEmpty())
            addCase({ name }, QStringLiteral("_filedir '%1'").arg(option.choices.first()));
    }
    addCase(namesOf(Value::File, false), QStringLiteral("_filedir"));
    addCase(namesOf(Value::Directory, false), QStringLiteral("_filedir -d"));
    addCase(namesOf(Value::Command, false), QStringLiteral("COMPREPLY=($(compgen -c -- \"$cur\"))"));
    addCase(namesOf(Value::Text, false), QStringLiteral(":"));
    QString cases;
    for (const auto& [action, names] : actions)
        cases += QStringLiteral("        %1)\n            %2\n            return\n            ;;\n")
                     .arg(names.join(QLatin1Char('|')), action);
    return QStringLiteral("# bash completion for quillon-cli; written by quillon-cli --completions bash\n"
                          "_quillon_cli()\n{\n"
                          "    local cur prev words cword split\n"
                          "    _init_completion -s || return\n"
                          "    case $prev in\n%1    esac\n"
                          "    $split && return\n"
                          "    if [[ $cur == -* ]]; then\n"
                          "        COMPREPLY=($(compgen -W '%2' -- \"$cur\"))\n"
                          "        return\n"
                          "    fi\n"
                          "    # Words after --filter are more definitions.\n"
                          "    _filedir ffxml\n"
                          "}\n"
                          "complete -F _quillon_cli quillon-cli\n")
        .arg(cases, allNames().join(QLatin1Char(' ')));
}

QString zshAction(const CliOptionSpec& option)
{
    switch (option.value) {
    case Value::None:
        return {};
    case Value::Text:
        return QStringLiteral(":%1: ").arg(option.valueName.toLower());
    case Value::File:
        return option.choices.isEmpty() ? QStringLiteral(":%1:_files").arg(option.valueName.toLower())
                                        : QStringLiteral(":%1:_files -g \"*.%2\"")
                                              .arg(option.valueName.toLower(), option.choices.first());
    case Value::Directory:
        return QStringLiteral(":%1:_files -/").arg(option.valueName.toLower());
    case Value::Command:
        return QStringLiteral(":%1:_command_names -e").arg(option.valueName.toLower());
    case Value::Choice:
        return QStringLiteral(":%1:(%2)").arg(option.valueName.toLower(), option.choices.join(' '));
    }
    return {};
}

QString zshScript()
{
    QString specs;
    for (const CliOptionSpec& option : cliOptionTable()) {
        QString text = summary(option);
        text.replace(QLatin1Char('['), QLatin1Char('(')).replace(QLatin1Char(']'), QLatin1Char(')'));
        text.replace(QLatin1Char(':'), QStringLiteral("\\:"))
            .replace(QLatin1Char('\''), QStringLiteral("'\\''"));
        const bool repeatable = option.names.contains(QStringLiteral("filter"))
            || option.names.contains(QStringLiteral("slurm-option"));
        for (const QString& name : option.names) {
            const QString flag = longName(name)
                + (option.value == Value::None || name.size() == 1 ? QString() : QStringLiteral("="));
            specs += QStringLiteral(" \\\n  '%1%2[%3]%4'")
                         .arg(repeatable ? QStringLiteral("*") : QString(), flag, text, zshAction(option));
        }
    }
    return QStringLiteral("#compdef quillon-cli\n"
                          "# zsh completion for quillon-cli; written by quillon-cli --completions zsh\n"
                          "_arguments -S%1 \\\n  '*:definition:_files -g \"*.ffxml\"'\n")
        .arg(specs);
}

QString fishScript()
{
    QString lines
        = QStringLiteral("# fish completion for quillon-cli; written by quillon-cli --completions fish\n"
                         "complete -c quillon-cli -f\n");
    for (const CliOptionSpec& option : cliOptionTable()) {
        QString line = QStringLiteral("complete -c quillon-cli");
        for (const QString& name : option.names)
            line += (name.size() == 1 ? QStringLiteral(" -s ") : QStringLiteral(" -l ")) + name;
        switch (option.value) {
        case Value::None:
            break;
        case Value::Text:
            line += QStringLiteral(" -x");
            break;
        case Value::File:
            line += QStringLiteral(" -r -F");
            break;
        case Value::Directory:
            line += QStringLiteral(" -x -a '(__fish_complete_directories)'");
            break;
        case Value::Command:
            line += QStringLiteral(" -r -F -a '(__fish_complete_command)'");
            break;
        case Value::Choice:
            line += QStringLiteral(" -x -a '%1'").arg(option.choices.join(' '));
            break;
        }
        QString text = summary(option);
        text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
            .replace(QLatin1Char('\''), QStringLiteral("\\'"));
        lines += line + QStringLiteral(" -d '%1'\n").arg(text);
    }
    return lines;
}

} // namespace

QString cliCompletionScript(const QString& shell)
{
    if (shell == QLatin1String("bash"))
        return bashScript();
    if (shell == QLatin1String("zsh"))
        return zshScript();
    if (shell == QLatin1String("fish"))
        return fishScript();
    return {};
}

} // namespace quillon
