"""Provisions one module. Usage: provision.py LIBRARY SSID PASSPHRASE [SECONDS]; LIBRARY is libZorSuiteC."""
import ctypes as c
import sys

Text = type("Text", (c.Structure,), {"_fields_": [("bytes", c.c_char_p), ("length", c.c_size_t)]})
Module = type("Module", (c.Structure,), {"_fields_": [("size", c.c_size_t)] + [
    (name, Text) for name in ("id", "ip", "version", "capabilities", "extension")]})
OnModule = c.CFUNCTYPE(None, c.c_void_p, c.POINTER(Module))
Callbacks = type("Callbacks", (c.Structure,), {"_fields_": [
    ("size", c.c_size_t), ("user", c.c_void_p), ("destroy", c.c_void_p), ("on_smart_found", OnModule),
    ("on_search_found", OnModule)]})

zor, ssid, pass_phrase = c.CDLL(sys.argv[1]), sys.argv[2].encode(), sys.argv[3].encode()
seconds = int(sys.argv[4]) if len(sys.argv) > 4 else 60
found = []
on_found = OnModule(lambda user, module: found.append(module.contents.id.bytes))
suite = c.c_void_p()
zor.zor_suite_create(c.byref(suite))
zor.zor_suite_set_callbacks(suite, c.byref(Callbacks(c.sizeof(Callbacks), on_smart_found=on_found)))
zor.zor_smart_config_online_listen(suite, 25010)
zor.zor_smart_config_v5_start(suite, ssid, c.c_size_t(len(ssid)), pass_phrase, c.c_size_t(len(pass_phrase)),
                              seconds * 1000)
while not found and (zor.zor_worker_is_running(0) or zor.zor_worker_is_running(1)):
    zor.zor_run_main_queue(100)  # Callbacks arrive here, on this thread.
zor.zor_smart_config_stop(suite)
zor.zor_suite_free(suite)
print("found", *(module.decode(errors="backslashreplace") for module in found))
sys.exit(0 if found else 1)
