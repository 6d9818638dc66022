// What the windows show, line by line, before anything has failed and without a simulator.
#pragma once

#include <string_view>

namespace quirkmeter {

inline constexpr std::string_view WindowTexts = R"(FS2002 Quirkmeter
Systems
Sub-systems
 Autopilot
 Control
 Electrical
 Engine
 Fuel
 Instrument
 Radio
Component|Reliability|Based on|Failed
 Airspeed|100%|1 hour of flight|Never
 Altitude|100%|1 hour of flight|Never
 Approach|100%|1 hour of flight|Never
 Attitude|100%|1 hour of flight|Never
 Autothrottle|100%|1 hour of flight|Never
 Back Course|100%|1 hour of flight|Never
 Glideslope|100%|1 hour of flight|Never
 Heading|100%|1 hour of flight|Never
 Mach|100%|1 hour of flight|Never
 Master|100%|1 hour of flight|Never
 Navigation|100%|1 hour of flight|Never
 Vertical Speed|100%|1 hour of flight|Never
 Wing Leveler|100%|1 hour of flight|Never
 Yaw Damper|100%|1 hour of flight|Never
Set &All Reliabilities
Set Autopilot &Reliabilities
&Clear All Failures
&Save Profile
&Open Profile
O&ptions
Status
FSUIPC - No connection to Flight Simulator.

Set Control &Reliabilities
Component|Reliability|Based on|Failed
 Aileron|100%|1 hour of flight|Never
 Elevator|100%|1 hour of flight|Never
 Elevator Trim|100%|1 hour of flight|Never
 Flaps|100%|1 hour of flight|Never
 Landing Gear|100%|1 hour of flight|Never
 Rudder|100%|1 hour of flight|Never
 Throttle|100%|1 hour of flight|Never

Set Electrical &Reliabilities
Component|Reliability|Based on|Failed
 Battery|100%|1 hour of flight|Never
 Entire System|100%|1 hour of flight|Never
 Alt/Gen (Engine 1)|100%|1 hour of flight|Never
 Alt/Gen (Engine 2)|100%|1 hour of flight|Never
 Alt/Gen (Engine 3)|100%|1 hour of flight|Never
 Alt/Gen (Engine 4)|100%|1 hour of flight|Never
 Master Avionics|100%|1 hour of flight|Never

Set Engine &Reliabilities
Component|Reliability|Based on|Failed
 Engine 1 (Fail)|100%|1 hour of flight|Never
 Engine 1 (Stall)|100%|1 hour of flight|Never
 Engine 2 (Fail)|100%|1 hour of flight|Never
 Engine 2 (Stall)|100%|1 hour of flight|Never
 Engine 3 (Fail)|100%|1 hour of flight|Never
 Engine 3 (Stall)|100%|1 hour of flight|Never
 Engine 4 (Fail)|100%|1 hour of flight|Never
 Engine 4 (Stall)|100%|1 hour of flight|Never

Set Fuel &Reliabilities
Component|Reliability|Based on|Failed
 Pump(s)|100%|1 hour of flight|Never
 Tank Center (Leak)|100%|1 hour of flight|Never
 Tank Left (Leak)|100%|1 hour of flight|Never
 Tank Left Aux (Leak)|100%|1 hour of flight|Never
 Tank Left Tip (Leak)|100%|1 hour of flight|Never
 Tank Right (Leak)|100%|1 hour of flight|Never
 Tank Right Aux (Leak)|100%|1 hour of flight|Never
 Tank Right Tip (Leak)|100%|1 hour of flight|Never
 Tank Center 2 (Leak)|100%|1 hour of flight|Never
 Tank Center 3 (Leak)|100%|1 hour of flight|Never
 Tank External 1 (Leak)|100%|1 hour of flight|Never
 Tank External 2 (Leak)|100%|1 hour of flight|Never

Set Instrument &Reliabilities
Component|Reliability|Based on|Failed
 Airspeed|100%|1 hour of flight|Never
 Altimiter|100%|1 hour of flight|Never
 Attitude|100%|1 hour of flight|Never
 Fuel|100%|1 hour of flight|Never
 Heading|100%|1 hour of flight|Never
 Magnetic Compass|100%|1 hour of flight|Never
 Pitot Static|100%|1 hour of flight|Never
 Turn Coordinator|100%|1 hour of flight|Never
 Vacuum|100%|1 hour of flight|Never
 Vertical Speed|100%|1 hour of flight|Never

Set Radio &Reliabilities
Component|Reliability|Based on|Failed
 ADF|100%|1 hour of flight|Never
 COM|100%|1 hour of flight|Never
 NAV|100%|1 hour of flight|Never
 Transponder|100%|1 hour of flight|Never

 Radio - ADF Reliability
[100]
.
[000]
%
based on
[1]
hours of flight
&Accept
&Cancel
&Test Failure
Clear &Failure

All Reliabilities
[100]
.
[000]
%
based on
[1]
hours of flight
&Accept
&Cancel

Help
&Help
&Settings
&Cancel
FSQM Version 1.3

Settings
&Display status changes in flight
Display &failure info in status
&Play a sound when a failure occurs
&Hardcore Mode (see Options/Help)
In Flight Status Hotkey
[None]
CTRL
SHIFT
Clear Last Failure Hotkey
[None]
CTRL
SHIFT
Activate/Deactivate QM Hotkey
[None]
CTRL
SHIFT
&OK
&Cancel

FS2002 Quirkmeter
Systems
Sub-systems
 Autopilot
 Control
 Electrical
 Engine
 Fuel
 Instrument
 Radio
Hardcore Mode ON.
The following options are not available while airborne:
Sub-systems display
Reliability setting
Failure clearing
Failure displaying
Profile opening
Deactivating
Set &All Reliabilities
Set Radio &Reliabilities
&Clear All Failures
&Save Profile
&Open Profile
O&ptions
Status
FSUIPC - No connection to Flight Simulator.
)";

}  // namespace quirkmeter
