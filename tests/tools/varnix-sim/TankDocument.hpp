#pragma once

// The tank program that the simulation engine's tests run: an analog input scaled into a qualified
// level, copied into a display value, and a text port.
namespace VarnixSimTest {

inline const char* const TankDocument = R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="Tank">
    <Ports>
      <Port name="raw" type="AnalogIn"/>
      <Port name="level" type="qualified.float64"/>
      <Port name="display" type="int16"/>
      <Port name="label" type="string80"/>
    </Ports>
    <Connectors>
      <Connector startPort="raw" endPort="level" type="scale">
        <Parameter name="gain" value="0.01"/>
      </Connector>
      <Connector startPort="level" endPort="display" type="copy"/>
    </Connectors>
  </Program>
</ConfigurableProgram>
)";

} // namespace VarnixSimTest
