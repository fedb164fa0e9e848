// Keeps DCMTK's automatic correction of input data off while any object of this class exists. The switch is
// process-wide; the last object to go restores what the first one found.
#pragma once

namespace kivds {

class InputCorrectionOff
{
public:
    InputCorrectionOff();
    ~InputCorrectionOff();
    InputCorrectionOff(const InputCorrectionOff&) = delete;
    InputCorrectionOff& operator=(const InputCorrectionOff&) = delete;
};

} // namespace kivds
