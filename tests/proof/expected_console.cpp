// What each command of the console asks, calls and says, written once more for the fault sweep.
#include "tests/proof/expected_console.h"

namespace proof {

namespace {

using namespace menus;
using Commands = std::map<char, Script>;

Commands operator+(Commands first, Commands const& second) {
    first.insert(second.begin(), second.end());
    return first;
}

Script call(std::string const& operation, std::string const& results = "") {
    return "<" + operation + (results.empty() ? "" : " ") + results + ">";
}

// The two prompts of a named setting.
Script shown(std::string const& operation, std::string const& name) {
    return call(operation + "()", "v") + "{?sensor actual " + name + ": $v|sensor error to get " + name + "}\n";
}
Script changed(std::string const& operation, std::string const& name) {
    return "Enter a value for " + name + ": @v" + call(operation + "($v)") + "{?sensor set  " + name +
           ": $v|sensor error to set " + name + "}\n";
}

// The module information. A negative status alone is a failure.
Commands module_commands(std::string const& type, std::string const& driver) {
    return {{'1', "Status of the Module: \t" + call(type + "::get_status()") + "{status<0?%error|Done!\n}"},
            {'2', "Revision of the Module: \t" + call(type + "::get_revision()", "major minor patch num year week") +
                      "{status<0?%error|" + driver +
                      "\nMajor \t$major,\nMinor \t$minor,\nWeek \t$week,\nYear \t$year,\nNum \t$num,\nPatch "
                      "\t$patch,\n Done!\n}"},
            {'3', ""}};
}

Script const kRtu = call(kRtuConstruction);

Script opening_of(Menu const& menu) {
    Script calls;
    for (std::string const& opening : menu.opening) {
        calls += call(opening.substr(0, opening.find(" = ")));
    }
    return menu.start + calls;
}

Script closing_of(Menu const& menu) {
    Script calls;
    for (std::string const& closing : menu.closing) {
        calls += call(closing);
    }
    return menu.goodbye + calls;
}

Dialogue dialogue(Menu const& menu, Commands commands) {
    return {&menu, opening_of(menu), closing_of(menu), std::move(commands)};
}

Dialogue main_menu() {
    return {
        &kMain, "", "", {{'A', "%files{}File Error Code: $code\n&code$&"}, {'O', "%(FIRMWARE=" + kFirmwareAb + ")"}}};
}

Dialogue system_menu() {
    Dialogue result = dialogue(kSystem, {{'f', "Enter device state: @v<system_t::set_device_status($v)>"},
                                         {'F', "<system_t::get_device_status() v>Read Device state$v\n"},
                                         {'h', "<system_t::trigger_heartbeat()>"}});
    result.otherwise = "Enter Valid option = $key";
    return result;
}

// Imaging.

Dialogue dio_menu() {
    Script const labelled =
        "\n\nDIO Pin: $pin\n"
        "DIO type 0-npn 1-pnp 2-pupu: $type\n"
        "DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB : $func\n"
        "DIO config 0-NO 1-NC : $config\n"
        "DIO invert 0-NO 1-INV: $invert\n"
        "DIO off_del active: $offactive\n"
        "DIO off_del time: $off\n"
        "DIO on_del active: $onactive\n"
        "DIO on_del time: $on\n"
        "DIO pulse active: $pulseactive\n"
        "DIO pulse time: $pulse\n"
        "&pin&type&func&config&invert&offactive&off&onactive&on&pulseactive&pulse$&";
    Dialogue result = dialogue(
        kDio,
        Commands{{'f',
                  "Setup DIO config: \nDIO Pin:^pin{}"
                  "DIO type 0-npn 1-pnp 2-pupu:^type{}"
                  "DIO func 0-Out 1-OutIll 2-In 3-InTrigIm 4-InQuadrA 5-InQuadrB:^func{}"
                  "DIO config 0-NO 1-NC :^config{}"
                  "DIO invert 0-NO 1-INV:^invert{}"
                  "DIO off_del active:^offactive{}"
                  "DIO off_del time:^off{}"
                  "DIO on_del active:^onactive{}"
                  "DIO on_del time:^on{}"
                  "DIO pulse active:^pulseactive{}"
                  "DIO pulse time:^pulse{}"
                  "<rtu_t::set_io_pin_config($pin, {$type, $func, $config, $?invert, $?onactive, $?offactive, "
                  "$?pulseactive, $on, $off, $pulse, {0: 46, 1: 48, 2: 18, 3: 17, 4: 19, 5: 20}})>"
                  "&status$&"},
                 {'F',
                  "DIO Pin:^pin<rtu_t::get_io_pin_config($pin) type func config invert onactive offactive "
                  "pulseactive on off pulse>" +
                      labelled},
                 {'h', "^pin{}Value for pin :$pin^v<rtu_t::set_pin_value($pin, $?v)>&status$&"},
                 {'H', "DIO Pin:^pin<rtu_t::get_pin_value($pin) v>Value: $v\n&v&v$&"},
                 {'o', "<rtu_t::set_lightbar_col({100, 255, 0, 0})>&status"},
                 {'O', "<rtu_t::set_lightbar_col({100, 0, 255, 255})>&status"},
                 {'p', "%(pins=000000)<rtu_t::get_all_pin_values() pins>%number{}All DIO status: $pins\n&number$&"}} +
            module_commands("rtu_t", "The RTU driver: \n"));
    // The menu's own object lives on.
    result.opening = "{OPENED=1?|%(OPENED=1)" + kRtu + "}" + screens::kDioStart;
    result.otherwise = "Enter Valid option = $key";
    return result;
}

Dialogue rtu_menu() {
    return dialogue(
        menus::kRtu,
        Commands{{'a', "Enter a value for imager type: 1- imx296, 2- ix567 \n^v<rtu_t::set_imager_type($v)>"},
                 {'A', "<rtu_t::get_imager_type() IMAGER>imager type: $IMAGER\n"},
                 {'b', changed("rtu_t::set_trigger_prohibited_time", "trigger_prohibited_time")},
                 {'B', shown("rtu_t::get_trigger_prohibited_time", "trigger_prohibited_time")},
                 {'c', changed("rtu_t::set_exposure_offset", "exposure_offset")},
                 {'C', shown("rtu_t::get_exposure_offset", "exposure_offset")},
                 {'e', changed("rtu_t::set_exposure", "exposure")},
                 {'E', shown("rtu_t::get_exposure", "exposure")},
                 {'m', "<rtu_t::single_shot(true)>"},
                 {'t',
                  "Enter a value for fps: ^v<rtu_t::set_trigger_mode(true)><rtu_t::set_aquisition_fps($v)>"
                  "{?sensor set  fps: $v|sensor error to set fps}\n&status"},
                 {'T', "<rtu_t::set_trigger_mode(false)>"},
                 {'p',
                  "<rtu_t::dio_available() v>{status=-1?|{v=1?24V power source detected, DIO available "
                  "\n|POE detected, DIO NOT available \n}}"}} +
            module_commands("rtu_t", "The RTU driver: \n"));
}

Dialogue camera_menu() {
    Script const limits = "  min:$min\n  max:$max\n  step:$step\n";
    Script const failed_offset = "\t\tsensor error to set roi x,y offset\n";
    Dialogue result = dialogue(
        kCamera,
        {{'m', "<camera_t::single_shot()>"},
         {'t', "<camera_t::set_trigger_mode(1)>"},
         {'T', "<camera_t::set_trigger_mode(0)>"},
         {'W',
          "<camera_t::get_trigger_mode() v>{?sensor get current trigger: {v=1?CONTINUOUS|MANUAL}|sensor error to "
          "get current trigger}\n"},
         {'u',
          "Enter a value for fps: ^v<camera_t::set_aquisition_framerate($v)>{?sensor set  fps: $v|sensor error "
          "to set fps}\n"},
         {'U', "<camera_t::get_aquisition_framerate() v>{?sensor get  fps: $v|sensor error to get fps}\n"},
         {'L', "<camera_t::get_aquisition_framerate_limits() min max step>{?sensor get  fps limits:\n" + limits +
                   "|sensor error to get fps limits\n}"},
         {'v', "<camera_t::start_acquisition()>"},
         {'V', "<camera_t::stop_acquisition()>"},
         {'e', shown("camera_t::get_gain", "gain")},
         {'E', changed("camera_t::set_gain", "gain")},
         {'f', shown("camera_t::get_exposure", "exposure")},
         {'F', changed("camera_t::set_exposure", "exposure")},
         {'w', "<camera_t::get_exposure_limits() min max step>{?sensor get  exposure limits:\n" + limits +
                   "|sensor error to get exposure limits\n}"},
         {'i', "<camera_t::get_framecount() v>sensor actual $v\n"},
         {'j',
          "Enter a value for x_offset:^x{}Enter a value for y_offset:^y<camera_t::set_roi_xyoffset($x, $y)>"
          "{?\t\t set roi offset x,y : $x,$y\n|\t\t sensor error to set roi x,y offset\n}&status"},
         {'J', "<camera_t::get_roi_xyoffset() x y>{?\t\tget roi offset x,y : $x,$y\n|" + failed_offset + "}"},
         {'k',
          "<camera_t::get_imxtype()>{status=1?\t\t imager 296 \n|{status=2?\t\t imager 567 \n|\t\t no imager  "
          "\n}}"},
         {'s', "<camera_t::get_hscanmode() v>Scanmode = $v\n&status"},
         {'S',
          "Enter a value for hscanmode: 0-NORMAL_ROI, 1-SUBSAMPLDING, "
          "2-BINNING:^v<camera_t::set_hscanmode($v)>"},
         {'z',
          "<camera_t::get_missed_trigger_counter() frame missed>READ MISSED TRIGGER COUNTER: $missed FRAME ID: "
          "$frame\n"},
         {'Z', "RESET MISSED TRIGGER COUNTER: \n<camera_t::reset_missed_trigger_counter()>"}});
    result.opening = "<camera_t::determine_imxtype()><camera_t::camera_t($status, null, \"/dev/r47-rtu-driver\", 2)>";
    return result;
}

// Which of the two sensors is opened its node tells: %files puts it into `sensor`, 0 where there is none,
// and then there is no menu.
Dialogue image_sensor_menu(Menu const& menu) {
    Dialogue result = dialogue(
        menu, Commands{{'c', shown("imx_t::get_sensortype", "sensortype")},
                       {'e', shown("imx_t::get_gain", "gain")},
                       {'E', changed("imx_t::set_gain", "gain")},
                       {'h', shown("imx_t::get_hscanmode", "hscanmode")},
                       {'H', changed("imx_t::set_hscanmode", "hscanmode")},
                       {'i', "<imx_t::get_framecount() v>sensor actual $v\n"},
                       {'j',
                        "<imx_t::set_roi_xyoffset(20, 20)>{?set roi offset to: 20, 20|sensor error to set roi "
                        "x,y offset}\n"},
                       {'J',
                        "<imx_t::get_roi_xyoffset() x y>\t\t{?get roi offset to: $x, $y|sensor error to set roi "
                        "x,y offset}\n"}} +
                  module_commands("imx_t", "The IMX$SENSOR driver: \n"));
    result.opening = "%files%(SENSOR=$sensor){sensor>0?<base_t::base_t(\"/dev/imx$sensor\", 2)>|%leave}";
    return result;
}

// Light.

// The unit's failure has one text, and what it then reads is shown all the same.
Script const kOrFailure = "{?|Communication Failure\n}";

Script light(std::string const& call_and_results) {
    return "<illumination_t::" + call_and_results + ">";
}

Script flag(std::string const& label, std::string const& name) {
    return label + "{" + name + "=0?FALSE |TRUE }\n";
}

Script asked_light(std::string const& prompt, std::string const& operation, std::string const& argument) {
    return prompt + "\n@v" + light(operation + "(" + argument + ")") + kOrFailure;
}

Script shown_light(std::string const& operation, std::string const& label) {
    return light(operation + "() v") + kOrFailure + label + "$v\n";
}

Script set_colour(std::string const& colour) {
    return light("get_brightness_limits_" + colour + "() min max step") +
           "Enter a value in range: $min - $max\n@v{v<=$max?No valid inptut$v\n|}" +
           light("set_brightness_" + colour + "($v)");
}

Script get_colour(std::string const& colour) {
    return light("get_brightness_" + colour + "() v") + light("get_brightness_limits_" + colour + "() min max step") +
           "\t\t get brightness " + colour + ": $(v)min: $min, max:$max ,step size: $step\n";
}

Dialogue illumination_menu() {
    Script const segments =
        "SEGMENT 0 IS {a=0?OFF|ON}\nSEGMENT 1 IS {b=0?OFF|ON}\nSEGMENT 2 IS {c=0?OFF|ON}\n"
        "SEGMENT 3 IS {d=0?OFF|ON}\n";
    return dialogue(
        kIllumination,
        Commands{
            {'a', light("get_pattern() v") + "{?\t\t get pattern: $v\n|Communication Failure\n}&status"},
            {'A', "Enter a value for the pattern 0 - Strobe, 1 - Continuous:@v{v=1?%(v=0)|%(v=65535)}" +
                      light("set_pattern($v)") + kOrFailure + "&status"},
            {'b', shown("illumination_t::get_segments", "segments")},
            {'B', changed("illumination_t::set_segments", "segments")},
            {'c', shown("illumination_t::get_brightness", "brightness")},
            {'C', changed("illumination_t::set_brightness", "brightness")},
            {'d', light("is_rgbw_illumination() v") + kOrFailure + "{v=1?IS RGBW|IS NOT RGBW}\n"},
            {'e',
             light("get_spot_states() range mode a b c d") + kOrFailure +
                 "{mode=16?FLASH MODE \n|{mode=48?CONTINUOUS MODE \n|}}{range=64?NOMINAL RANGE \n|{range=128?DOUBLE "
                 "RANGE \n|{range=192?TRIPLE RANGE \n|}}}" +
                 segments},
            {'f', light("get_spot_flags() error power trigger driver calibration dvsc bc ot") + kOrFailure +
                      flag("ERROR: ", "error") + flag("CALIBRATION ERROR: ", "calibration") +
                      flag("DRIVER ERROR: ", "driver") + flag("DVSC: ", "dvsc") + flag("LOW POWER: ", "power") +
                      flag("BC: ", "bc") + flag("OT: ", "ot") + flag("TRG OVF: ", "trigger")},
            {'g', shown_light("get_error_code", "ERROR CODE: ")},
            {'h', light("set_write_protection(true)") + kOrFailure},
            {'i', light("set_write_protection(false)") + kOrFailure},
            {'j', light("get_exposure_mode() v") + kOrFailure +
                      "{v=65534?exposure FLASH \n|{v=65535?exposure SWITCH \n|{v=0?exposure CONTINUOUS \n|}}}"},
            {'J',
             "set exposure mode: 0: CONTINOUS, 1: SWITCH, 2: FLASH\n@v{v=2?Exposure time is needed for FLASH mode, "
             "enter a value: \n@time%(mode=65534)|{v=1?%(mode=65535)|}}" +
                 light("set_exposure_mode($mode, $time)") + kOrFailure},
            {'k', light("get_red_led() v") + kOrFailure + flag("RED ENABLED: ", "v")},
            {'K', asked_light("set led state: \n RED: 0 - disable 1 - enable", "set_red_led", "$?v")},
            {'z', light("get_green_led() v") + kOrFailure + flag("GREEN ENABLED: ", "v")},
            {'Z', asked_light("set led state: \n GREEN: 0 - disable 1 - enable", "set_green_led", "$?v")},
            {'y', light("get_alter_led() v") + kOrFailure + flag("ALTER ENABLED: ", "v")},
            {'Y', asked_light("set led state: \n ALTER: 0 - disable 1 - enable", "set_alter_led", "$?v")},
            {'l', shown_light("get_dc_brightness_limit", "DC BRIGHTNESS LIMIT: ")},
            {'L', asked_light("set_dc_brightness_limit", "set_dc_brightness_limit", "$v")},
            {'m', shown_light("get_flash_brightness_limit", "FLASH BRIGHTNESS LIMIT: ")},
            {'M', asked_light("set_flash_brightness_limit", "set_flash_brightness_limit", "$v")},
            {'n', light("get_mode() v") + kOrFailure + "{v=1?ACTIVE|INACTIVE }\n"},
            {'N', asked_light("mode 0:INACTIVE 1:ACTIVE ", "set_mode", "$v")},
            {'o', shown_light("get_internal_temperature", "internal temp: ")},
            {'O', shown_light("get_external_temperature", "external temp: ")},
            {'p', shown_light("get_ot_off_limit", "OT LIMIT temp: ")},
            {'P', asked_light(" SET OT OFF LIMIT: ", "set_ot_off_limit", "$v")},
            {'q', light("get_guards() ot dvs autocal pvd") + kOrFailure + flag("OT: ", "ot") + flag("DVS: ", "dvs") +
                      flag("AUTOCAL: ", "autocal") + flag("PVD: ", "pvd")},
            {'Q',
             "set guards: OT: 0 FALSE, 1 TRUE\n@ot{}set guards: DVS: 0 FALSE, 1 TRUE\n@dvs{}set guards: AUTOCAL: 0 "
             "FALSE, 1 TRUE\n@autocal{}set guards: PVD: 0 FALSE, 1 TRUE\n@pvd" +
                 light("set_guards({$?ot, $?dvs, $?autocal, $?pvd})") + kOrFailure},
            {'r', asked_light(" SET OT DECREASE LIMIT: ", "set_limit_ot_decrease", "$v")},
            {'s', set_colour("red")},
            {'S', get_colour("red")},
            {'t', set_colour("green")},
            {'T', get_colour("green")},
            {'u', set_colour("blue")},
            {'U', get_colour("blue")},
            {'v', light("is_present() v") + "Illumination {status<0?MISSING|AVAILABLE}\n"}} +
            module_commands("illumination_t", "The Illumination driver: \n"));
}

// A failed read prints nothing, a failed write one line.
Script focus(std::string const& call_and_results, std::string const& text) {
    return "<autofocus_t::" + call_and_results + ">{?" + text + "|}";
}

Script set_focus(std::string const& prompt, std::string const& operation, std::string const& argument,
                 std::string const& refusal) {
    return prompt + "\n@v<autofocus_t::" + operation + "(" + argument + ")>{?|\t\t error setting " + refusal + "\n}";
}

Dialogue autofocus_menu() {
    Script const limits = "\t\t min pos: $min, max pos: $max\n";
    return dialogue(
        kAutofocus,
        Commands{{'a', focus("get_position() v", "\t\t get position : $v\n")},
                 {'A', set_focus("AF new pos: ", "set_position", "$v", "posisiton $v")},
                 {'b', "<autofocus_t::reset()>"},
                 {'c', "<autofocus_t::calibrate()>"},
                 {'d', focus("get_calibration_frequency() v", "\t\t get freq: $(v)hz\n")},
                 {'e', focus("read_error() reserved frequency init stuck target mirror none link table",
                             flag("communication_error: ", "link") + flag("initialization_error: ", "init") +
                                 flag("miror_failure: ", "mirror") + flag("motor_stuck: ", "stuck") +
                                 flag("no_mirror: ", "none") + flag("no_valid_frequency: ", "frequency") +
                                 flag("target_unreachable: ", "target") + flag("empty_calibration_table: ", "table"))},
                 {'f', "<autofocus_t::is_present()>Autofocus {status=1?AVAILABLE|MISSING}\n"},
                 {'g', focus("get_position_limits() min max", limits)},
                 {'h', set_focus("AF doe mode: 0 = doe is disabled, 1 = doe is enabled and off by trigger ",
                                 "set_doe_mode", "$v", "set_doe_mode $v")},
                 {'i', set_focus("AF doe led: 0 = doe follows doe mode, 1 = doe is forced to active",
                                 "set_doe_force_active", "$?v", "set_doe_force_active $v")},
                 {'l', "enter device type: 1: R47XXXX1 2: R47XXXX2 3: R47XXXX3\n@word" +
                           focus("get_position_limits_mm(\"$word\") min max", limits)},
                 {'m', focus("get_position_mm() v", "\t\t get position mm : $v\n")},
                 {'M', set_focus("AF new pos: ", "set_position_mm", "$v", "position mm $v")},
                 {'n', set_focus("set AF maintenance mode: 0 = disabled, 1 = enabled", "set_maintenance_mode", "$?v",
                                 "maintenance mode ")}} +
            module_commands("autofocus_t", ""));
}

// Motion.

Script const kGyroConstruction =
    "<gyro_t::gyro_t(\"/dev/i2c-2\", 2, \"$FIRMWARE\", \"/sys/class/gpio/gpio481/value\", 200)>";
Script const kPositionReached = "rtu_t::set_device_status(3)";
Script const kPositionLeft = "rtu_t::set_device_status(5)";
Script const kTaught = "gyro_alarm_t::teach_current_position()";

// The key that holds and releases the callbacks.
Script toggled(std::string const& said_when_released = "") {
    return "{HELD=1?%(HELD=0)<gyro_t::irq_callback_hold(false)>" + said_when_released +
           "|%(HELD=1)<gyro_t::irq_callback_hold(true)>}";
}

Dialogue gyro_menu() {
    Script const start =
        "<gyro_t::boot()><gyro_t::install_callbacks()><gyro_t::info_firmware()>%report\n\n\n\n\n"
        "<gyro_t::activate_vsensor(37, 5, 1)>";
    Script const activate =
        "Activating sensor: $ACTIVE with frame rate: $RATE and latency: $LATENCY\n"
        "<gyro_t::activate_vsensor($ACTIVE, $RATE, $LATENCY)>";
    Script const first = "{CHOSEN=1?|%(CHOSEN=1)%(ACTIVE=$ID)}";
    Dialogue result = dialogue(
        kGyro,
        Commands{
            {'d', "Please enter sensor id: @ID{}Your Option = $ID\n"},
            {'D',
             "Sensor id: $ID\nPlease frame rate @ID{}Please enter frame rate: [$DEFAULTRATE]\n@DEFAULTRATE{}"
             "Please enter latency: [$DEFAULTLATENCY]\n@DEFAULTLATENCY"},
            {'a', first + activate},
            {'A', first +
                      "Please enter sensor id: [$ACTIVE]\n@ACTIVE{}Please enter frame rate: [$RATE]\n@RATE{}Please "
                      "enter latency: [$LATENCY]\n@LATENCY{}" +
                      activate},
            {'w', "<gyro_t::info_vsensor_list()>%report"},
            {'W', "<gyro_t::info_psensor_list()>%report"},
            {'s', "<gyro_t::info_vsensor_cfg($ID)>%report"},
            {'S', "<gyro_t::info_vsensor($ID)>%report"},
            {'P', "<gyro_t::info_psensor(1)><gyro_t::info_psensor(3)>%report"},
            {'f', "<gyro_t::upload_firmware(\"./Bosch.fw\")>"},
            {'F', "<gyro_t::info_firmware()>%report"},
            {'q', "<gyro_t::info_firmware()>%report"},
            {'e', "<gyro_t::info_irq_ctrl()>%report"},
            {'E', "<gyro_t::info_irq()>%report"},
            {'b', "<gyro_t::boot()>{?|booting failed\n}"},
            {'B', "<gyro_t::install_callbacks()>"},
            {'n', start},
            {'t', toggled()}} +
            module_commands("gyro_t", ""));
    result.opening = "%(HELD=0)" + kGyroConstruction + start + "<gyro_t::irq_callback_hold(false)>";
    return result;
}

// The calls with which both menus of the alarm begin, at the rate of their sensor.
Script alarm_opening(std::string const& name, std::string const& rate, std::string const& delegate) {
    return "%(HELD=0)int " + name + "()\nDetected device R47" + kRtu + kGyroConstruction +
           call(button_construction(82)) +
           "<gyro_t::boot()><gyro_t::info_firmware()>%report<gyro_t::activate_vsensor(37, " + rate +
           ", 1)><gyro_alarm_t::gyro_alarm_t(#, 37)>" + delegate + call(kPositionReached) +
           "<gyro_t::irq_callback_hold(false)><button_t::irq_callback_hold(false)>";
}

std::map<std::string, std::vector<std::string>> const kAlarmCallbacks{
    {"gyro_alarm_t::on_position_reached()", {kPositionReached}},
    {"gyro_alarm_t::on_position_left()", {kPositionLeft}},
    {"button_t::release_records(1)", {kTaught}},
};

Dialogue alarm_menu() {
    Script const angle = "Please enter angle@v<gyro_alarm_t::set_angle_limit($v)>";
    Dialogue result = dialogue(kAlarm, {{'a', angle}, {'b', angle}, {'g', angle}, {'t', toggled()}});
    result.opening = alarm_opening("test_gyro_alarm", "10", "");
    result.callbacks = kAlarmCallbacks;
    return result;
}

Dialogue delegate_menu() {
    Dialogue result = dialogue(kDelegate, {{'t', toggled("Running")}});
    result.opening = "%(HELD=0)" + call(gyro_construction()) +
                     "<gyro_t::boot()><gyro_t::activate_vsensor(37, 5, 1)>"
                     "<gyro_delegate_t::gyro_delegate_t(#, 37, function)>";
    result.callbacks = {{"gyro_delegate_t(37)", {""}}};
    return result;
}

Dialogue delegate_and_alarm_menu() {
    Dialogue result = dialogue(kDelegateAndAlarm, {{'t', toggled()}});
    result.opening =
        alarm_opening("test_gyro_delegate_and_alarm", "1", "<gyro_delegate_t::gyro_delegate_t(#, 37, function)>");
    result.callbacks = kAlarmCallbacks;
    result.callbacks.insert({"gyro_delegate_t(37)", {""}});
    return result;
}

Dialogue legacy_alarm_menu() {
    Dialogue result =
        dialogue(kLegacyAlarm, {{'i', "<gyro_t::info_vsensor_list()>%report"}, {'t', toggled("Running")}, {'s', ""}});
    result.opening = "%(HELD=0)int test_alarm_old()\n" + kRtu + call(gyro_construction()) +
                     "<gyro_alarm_t::gyro_alarm_t(#, 37)><gyro_t::boot()><gyro_t::install_callbacks()>"
                     "<gyro_t::irq_callback_hold(true)><gyro_t::info_firmware()>%report"
                     "<gyro_t::activate_vsensor(37, 1, 1)>" +
                     call(button_construction(44)) + "<button_t::irq_callback_hold(false)>" + call(kPositionReached) +
                     "<gyro_t::irq_callback_hold(false)><gyro_t::irq_callback_hold(false)>";
    // The console's own watchdog decides whether a sample changes the state, and says so.
    result.callbacks = {{"gyro_t::callback_records(0, 37)", {"", kPositionReached, kPositionLeft}},
                        {"button_t::release_records(1)", {""}}};
    result.announcements = {{"Changing to running", kPositionReached}, {"Changing to warning", kPositionLeft}};
    return result;
}

Dialogue button_menu() {
    Dialogue result = dialogue(kButton, {{'r', "Starting read: 0\n<button_t::irq_read() v>Irq status: $v\n&v$&"}});
    result.callbacks = {{"button_t::press_records(1)", {"rtu_t::set_lightbar_col({100, 0, 255, 255})"}},
                        {"button_t::press_records(3)", {"rtu_t::set_lightbar_col({100, 0, 0, 255})"}},
                        {"button_t::release_records(1)", {""}},
                        {"button_t::release_records(2)", {""}},
                        {"button_t::release_records(3)", {""}}};
    return result;
}

// Ranging.

// Statuses are ignored: a refused value shows in the second reading.
Script ranged(std::string const& prompt, std::string const& name, std::string const& what) {
    return prompt + "@v<tof_t::get_" + what + "() now>Old " + name + " : $now\n<tof_t::set_" + what +
           "($v)><tof_t::get_" + what + "() now>New " + name + " : $now\n";
}

Script calibrated(std::string const& prompt, std::string const& name, std::string const& what,
                  std::string const& field) {
    return prompt + "@v{}Old " + name + " : $" + field + "\n<tof_t::set_calibration_" + what + "($v)>{?%(" + field +
           "=$v)|}New " + name + " : $" + field + "\n";
}

Dialogue tof_menu() {
    Dialogue result = dialogue(
        kTof,
        {{'a', ranged("Enter resolution: ", "resolution", "resolution")},
         {'b', ranged("Enter value: ", "frequency", "frequency")},
         {'c', ranged("Enter value: ", "Ranginig Mode", "ranging_mode")},
         {'d', ranged("Enter value: ", "Integration Time", "integration_time")},
         {'e', calibrated("Enter Reflectance percent: ", "Reflectance percent", "reflectance_percent", "REFLECTANCE") +
                   calibrated("Enter Number Of Samples: ", "Number Of Samples", "nb_samples", "SAMPLES") +
                   calibrated("Enter Object Distance: ", "Object Distance", "distance", "DISTANCE")},
         {'f', "<tof_t::xtalk_calibration()>"},
         {'g', "Enter number of measurements: @v"},
         {'h', "<tof_t::shot() *>{?<tof_t::get_resolution() zones>{?%grid|}|}"},
         {'i', "<tof_t::illumination_module_test()>"},
         {'j', ranged("Enter value: ", "Power Mode", "power_mode")}});
    result.opening += "%(REFLECTANCE=3)%(SAMPLES=4)%(DISTANCE=600)";
    result.otherwise = "unknown command $key\n";
    return result;
}

}  // namespace

std::vector<Dialogue> const& dialogues() {
    static std::vector<Dialogue> const all{main_menu(),
                                           system_menu(),
                                           dio_menu(),
                                           rtu_menu(),
                                           camera_menu(),
                                           image_sensor_menu(kImx296),
                                           illumination_menu(),
                                           image_sensor_menu(kImx567),
                                           autofocus_menu(),
                                           gyro_menu(),
                                           alarm_menu(),
                                           delegate_menu(),
                                           delegate_and_alarm_menu(),
                                           legacy_alarm_menu(),
                                           button_menu(),
                                           tof_menu()};
    return all;
}

std::map<std::string, Script> const& entry_point_scripts() {
    static std::map<std::string, Script> const scripts{
        {"rtu_delegate",
         "<rtu_delegate_t::rtu_delegate_t(\"/dev/r47-rtu-driver\", 2)><rtu_delegate_t::get_status()>"
         "<rtu_delegate_t::get_revision()><rtu_delegate_t::get_heartbeat_timeout()>"
         "<rtu_delegate_t::~rtu_delegate_t()>returned 0\n"},
        {"illumination_client",
         "<base_t::base_t(\"/dev/r47-illumination-driver\", 2)>"
         "<illumination_t::get_segments_limits() min max step>Enter a value in range: $min - $max(each bit is a "
         "segment)\n"
         "^v{v>15?No valid input $v\n|}" +
             light("set_segments($v)") + kOrFailure + "&status" + light("get_segments() segments") +
             light("get_segments_limits() min max step") +
             "{?\t\t get segments: $segments ,min: $min, max: $max\n|Communication Failure\n}&status"
             "%(min=0)%(max=0)<illumination_t::get_brightness_limits() min max step>Enter a value in range: $min - "
             "$max\n"
             "^v{v>14?No valid input $v\n|}" +
             light("set_brightness($v)") + kOrFailure + "&status%(min=0)%(max=0)" +
             light("get_brightness() brightness") + light("get_brightness_limits() min max step") +
             "\t\t get brightness: $brightness ,min: $min, max: $max\n" + kOrFailure + "&status<base_t::~base_t()>$&"},
    };
    return scripts;
}

}  // namespace proof
