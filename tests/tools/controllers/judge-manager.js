// SPDX-License-Identifier: GPL-3.0-or-later
// Drives the lab's players with @svrooij/sonos, knowing only its public interface, and prints what it saw as one
// JSON object. Usage: node judge-manager.js ADDRESS STREAM_URI VOLUME
'use strict'

const { SonosEvents, SonosManager } = require('@svrooij/sonos')

const [address, streamUri, volume] = process.argv.slice(2)
const pause = (ms) => new Promise((resolve) => setTimeout(resolve, ms))

async function describe (device) {
  const attributes = await device.DevicePropertiesService.GetZoneAttributes()
  const level = await device.RenderingControlService.GetVolume({ InstanceID: 0, Channel: 'Master' })
  const transport = await device.AVTransportService.GetTransportInfo({ InstanceID: 0 })
  return {
    name: device.Name,
    host: device.Host,
    uuid: device.Uuid,
    group: device.GroupName,
    coordinator: device.Coordinator.Uuid,
    zone: attributes.CurrentZoneName,
    volume: level.CurrentVolume,
    state: transport.CurrentTransportState
  }
}

async function discover () {
  const manager = new SonosManager()
  try {
    await manager.InitializeWithDiscovery(5)
    return manager.Devices.map((device) => device.Uuid).sort()
  } finally {
    manager.CancelSubscription()
  }
}

async function play (device) {
  const told = []
  device.Events.on(SonosEvents.CurrentTransportState, (state) => told.push(state))
  await device.AVTransportService.SetAVTransportURI({
    InstanceID: 0, CurrentURI: streamUri, CurrentURIMetaData: ''
  })
  const started = await device.Play()
  await pause(1500)
  const media = await device.AVTransportService.GetMediaInfo({ InstanceID: 0 })
  const playing = await device.AVTransportService.GetTransportInfo({ InstanceID: 0 })
  const paused = await device.Pause()
  const after = await device.AVTransportService.GetTransportInfo({ InstanceID: 0 })
  let refusal = null
  try {
    await device.AVTransportService.Pause({ InstanceID: 0 })
  } catch (error) {
    refusal = { code: error.UpnpErrorCode, text: String(error.message) }
  }
  await pause(200)
  return {
    started,
    uri: media.CurrentURI,
    playing: playing.CurrentTransportState,
    paused,
    after: after.CurrentTransportState,
    refusal,
    told
  }
}

async function main () {
  const manager = new SonosManager()
  await manager.InitializeFromDevice(address)
  const devices = []
  for (const device of manager.Devices) {
    devices.push(await describe(device))
  }
  const first = manager.Devices.find((device) => device.Host === address)
  await first.SetVolume(Number(volume))
  const played = await play(first)
  manager.CancelSubscription()
  return { devices, played, discovered: await discover() }
}

main().then((seen) => {
  process.stdout.write(JSON.stringify(seen), () => process.exit(0))
}, (error) => {
  process.stderr.write(`${error.stack}\n`, () => process.exit(1))
})
setTimeout(() => {
  process.stderr.write('no end within 40 s\n', () => process.exit(1))
}, 40000)
