#pragma once

#include <QValidator>

class QLineEdit;

/// Refuses every change of the port field that is no digit or leads beyond 65535. Main thread; belongs to the field.
class PortValidator final : public QValidator
{
    Q_OBJECT
public:
    explicit PortValidator(QLineEdit &field);

    /// Puts a stored text into the field as it is, whatever it holds.
    void setStoredText(const QString &text);

    State validate(QString &text, int &position) const override;

private:
    QLineEdit &field;
    QString accepted;
};
