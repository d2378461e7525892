// Every fixed text of live scanning, once. "{}" stands for what is filled in.
#pragma once

namespace System::Beacon::Messages {

// Why scanning does not start, and what to do about it.
inline constexpr char SNoBus[] =
    "The Bluetooth daemon cannot be reached: no system bus ({}). Start it with 'systemctl start "
    "dbus', or let DBUS_SYSTEM_BUS_ADDRESS hold its address.";
inline constexpr char SNoDaemon[] =
    "The Bluetooth daemon does not run. Start it with 'systemctl start bluetooth' (Debian package "
    "bluez).";
inline constexpr char SNoAdapter[] =
    "There is no Bluetooth adapter. Plug one in; if there is one, see why the system does not use "
    "it with 'rfkill list' and 'dmesg'.";
inline constexpr char SWrongAdapter[] =
    "There is no Bluetooth adapter {}. Use one of: {}; or none to take the first.";
inline constexpr char SAdapterOff[] =
    "Bluetooth adapter {} is off. Switch it on with 'bluetoothctl power on'; if that fails, first "
    "'rfkill unblock bluetooth'.";
inline constexpr char SAccessDenied[] =
    "This user may not use the Bluetooth daemon: {}. Add the user to the group bluetooth and log "
    "in again, or run as root.";
inline constexpr char SBusy[] =
    "Bluetooth adapter {} is busy with another program's request. Try again in a moment.";
inline constexpr char SCallFailed[] =
    "The Bluetooth daemon refused {} with {}: {}. 'journalctl -u bluetooth' may tell why.";
inline constexpr char SNoAnswer[] =
    "The Bluetooth daemon does not answer. Restart it with 'systemctl restart bluetooth'.";
inline constexpr char SBusLost[] =
    "The connection to the system bus is lost; trying to connect again.";
inline constexpr char SSourceClosed[] =
    "The Bluetooth source is not open. Open it before asking for advertisements.";
inline constexpr char SNoWakeUp[] =
    "No event descriptor for the Bluetooth source ({}). Close files or raise 'ulimit -n'.";
inline constexpr char SWaitFailed[] = "Waiting for the Bluetooth daemon failed ({}).";

// What is told while scanning goes on.
inline constexpr char SDaemonStopped[] =
    "The Bluetooth daemon has stopped; waiting for it to start again.";
inline constexpr char SAdapterGone[] = "Bluetooth adapter {} is gone; waiting for it to come back.";
inline constexpr char SScanningAgain[] = "Scanning again on Bluetooth adapter {}.";
inline constexpr char SNoMonitor[] =
    "The Bluetooth daemon offers no advertisement monitor: most adapters then report a beacon only "
    "about every 10 seconds. Set 'Experimental = true' in /etc/bluetooth/main.conf and restart it.";
inline constexpr char SMonitorRefused[] =
    "The Bluetooth daemon refused the advertisement monitor ({}: {}): most adapters then report a "
    "beacon only about every 10 seconds.";
inline constexpr char SMonitorDropped[] =
    "The Bluetooth daemon dropped the advertisement monitor: most adapters then report a beacon "
    "only about every 10 seconds.";

}  // namespace System::Beacon::Messages
