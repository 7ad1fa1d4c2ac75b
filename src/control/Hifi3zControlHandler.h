#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "control/ControlHandler.h"
#include "dsp/ISetParameterArrayBufferGeneratorV2.h"
#include "dsp/ISetParameterListBufferGenerator.h"

namespace TesselFX {

/// The control handler of an effect on a HiFi 3z DSP. Enable and bypass are no control
/// messages here but parameter 1 of the parameter stream (1.0 passes audio unprocessed).
/// Parameters go out through a differential generator: it is primed with the full parameter
/// set at construction, the first send after construction or a DSP wake-up carries every
/// block, later sends only the blocks that changed. No lock: every call comes under the
/// control manager's lock.
class Hifi3zControlHandler : public ControlHandler {
  public:
    /// The parameter that carries enable and bypass.
    static constexpr unsigned int kEnableBypassParameter = 1;

    Hifi3zControlHandler(const std::shared_ptr<IDspBufferSender>& dspBufferSender,
                         const std::shared_ptr<IControlDescription>& controlDescription,
                         const std::shared_ptr<IPresetSet>& presetSet,
                         const std::shared_ptr<IVolumePolicy>& volumePolicy,
                         const std::shared_ptr<IVolumeTableHelper>& volumeTableHelper,
                         const std::shared_ptr<OrientationPolicy>& orientationPolicy,
                         const std::shared_ptr<IControlBufferGenerator>& generator,
                         const std::shared_ptr<IReplyBufferParser>& parser,
                         const std::shared_ptr<IMasterValueConverter>& masterValueConverter);
    ~Hifi3zControlHandler() override;

    /// Only the current preset: enable and bypass travel inside it.
    bool FlushAllSettingsToDsp() override;
    /// The DSP lost its state: the next send is a full one, now unless waiting for a flush.
    bool OnDspWakeUp() override;
    std::string GetDescriptionString() const override;
    bool SendEnable(bool enable) override;
    bool SendBypass(bool bypass) override;
    bool SetParametersArrayCommandImpl(const std::map<unsigned int, double>& parameters,
                                       bool flag) override;

    /// Sends parameter 1 alone with the value of GetEnableBypassParameterValue.
    virtual bool SendEnableBypassParameter();
    /// 1.0 when bypassed or disabled, else 0.0.
    virtual double GetEnableBypassParameterValue();
    /// Sets parameter 1 to the handler's state only where the preset has it at exactly 0.0:
    /// a preset that bypasses stays bypassed whatever the handler says.
    virtual void MergeEnableBypassParameter(std::map<unsigned int, double>& parameters);
    /// Gives the generator the current parameters as its baseline without sending anything.
    virtual void PrimeParameterGenerator();

  protected:
    /// With a generator of change lists, gives it only the changed parameters, parameter 1
    /// and the NaN ones, unless its cache may hold anything else than the parameters sent.
    bool SendParameterList(const ParameterList& all, const ParameterChanges& changes,
                           bool flag) override;
    /// Sends the frames that make fills, in order, and stops at the first failure. make
    /// returns the generator's status; a failure sends nothing.
    template <typename Make>
    bool SendParameterFrames(Make make);

    std::shared_ptr<ISetParameterArrayBufferGeneratorV2> m_pSetParameterArrayBufferGeneratorV2;
    bool m_parametersSent = false;
    std::shared_ptr<ISetParameterListBufferGenerator> m_parameterListGenerator;
    /// The generator's cache agrees with the handle's final parameters as last sent, but for
    /// parameter 1 and NaN values: a change list then says all that differs.
    bool m_generatorTracked = false;

  private:
    /// Sends the frames in order; false after the log line at the first that fails.
    /// overtaken tells whether a send made from inside buffer_sender went before frames of
    /// these that were still to go.
    bool SendBuffers(const std::vector<std::vector<char>>& buffers, bool& overtaken);

    /// Counts the frame sends begun, so that a send can tell that another one ran from inside
    /// its own buffer_sender calls.
    unsigned int m_sendsBegun = 0;
};

}  // namespace TesselFX
