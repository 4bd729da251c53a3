/* Provisions one module and says who it is. Usage: provision SSID PASSPHRASE [SECONDS] */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zorsuite.h>

static void on_found(void* user, const zor_module* module) {
  /* Both texts come from the network: a real program escapes them before it shows them. */
  printf("found %s at %s\n", module->id.bytes, module->ip.bytes);
  *(int*)user = 1;
}

static int is_sending(void) {
  return zor_worker_is_running(ZOR_WORKER_MULTICAST) == 1 || zor_worker_is_running(ZOR_WORKER_BROADCAST) == 1;
}

/* Returns 1 once a module has announced itself, 0 when the time is up without one. */
static int provision(zor_suite* suite, const char* ssid, const char* pass_phrase, int32_t timeout_ms) {
  int found = 0;
  zor_callbacks callbacks = {0};
  callbacks.size = sizeof callbacks;
  callbacks.user = &found;
  callbacks.on_smart_found = on_found;
  zor_suite_set_callbacks(suite, &callbacks);
  if (zor_smart_config_online_listen(suite, ZOR_C_ANNOUNCEMENT_PORT) < 0) fprintf(stderr, "no listener\n");
  zor_smart_config_v5_start(suite, ssid, strlen(ssid), pass_phrase, strlen(pass_phrase), timeout_ms);
  while (!found && is_sending()) zor_run_main_queue(100); /* Callbacks arrive here, on this thread. */
  zor_smart_config_stop(suite);
  zor_suite_set_callbacks(suite, NULL); /* From here on nothing uses `found`. */
  return found;
}

int main(int argument_count, char** arguments) {
  zor_suite* suite = NULL;
  int found;
  if (argument_count < 3) {
    fprintf(stderr, "usage: %s SSID PASSPHRASE [SECONDS]\n", arguments[0]);
    return 2;
  }
  if (zor_suite_create(&suite) != ZOR_OK) return 1;
  found =
      provision(suite, arguments[1], arguments[2], argument_count > 3 ? atoi(arguments[3]) * 1000 : 60000);
  zor_suite_free(suite);
  return found ? 0 : 1;
}
