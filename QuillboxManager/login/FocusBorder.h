#pragma once

class QBBox;
class QBTextField;

/// Colours a box after the focus of the field in it, for windows that take no notice of the focus otherwise. Main
/// thread.
namespace FocusBorder
{

void follow(QBTextField *field, QBBox *box);

} // namespace FocusBorder
